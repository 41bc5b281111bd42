// FILE elements: their stream is closed once, whoever holds them and however often.
#include <fcntl.h>
#include <gtest/gtest.h>

#include "recount.h"
#include "spaces/copies.h"
#include "spaces/making.h"
#include "spaces/refderef.h"

using namespace morvik;

namespace {

using namespace points;

Point filespace(std::FILE *stream) {
  Point top = vector({whole(5), octonion({1})});
  Element e;
  makehandle(e, stringdup("a name"), stream, top);
  Point p{};
  p.type = ISSCALAR | HASFILE;
  p.elements = 1;
  p.data_pointer = newelements(1);
  *p.data_pointer = e;
  return p;
}

bool isopen(int descriptor) {
  return fcntl(descriptor, F_GETFD) != -1;
}

TEST_F(Lifetimes, AStreamIsClosedWithItsLastHolder) {
  std::FILE *stream = std::tmpfile();
  const int descriptor = fileno(stream);
  Point &p = hold(filespace(stream));
  EXPECT_EQ(p.data_pointer->form, 4);
  EXPECT_EQ(p.data_pointer->attributes, attributes::NAMED);
  EXPECT_EQ(p.data_pointer->file.stream, stream);
  EXPECT_EQ(handlestream(*p.data_pointer), stream);
  Point &q = holdcopy(p);
  expectexact();
  dereferencepoint(&p);
  EXPECT_TRUE(isopen(descriptor));
  Element copy;
  copyelement(copy, *q.data_pointer);
  dereferencepoint(&q);
  EXPECT_TRUE(isopen(descriptor));
  Point &structure = hold(vector({whole(1), enclosed(vector({copy}))}));
  EXPECT_EQ(structure.data_pointer[1].subarray->type & HASFILE, HASFILE);
  holdcopy(structure);
  expectexact();
  dereferencepoint(&held[2]);
  EXPECT_TRUE(isopen(descriptor));
  dereferencepoint(&held[3]);
  EXPECT_FALSE(isopen(descriptor));
}

TEST_F(Lifetimes, AStreamThatWasClosedIsNotClosedAgain) {
  std::FILE *stream = std::tmpfile();
  Point &p = hold(filespace(stream));
  Element copy;
  copyelement(copy, *p.data_pointer);
  Point &q = hold(vector({copy}));
  std::fclose(handlestream(*p.data_pointer));
  sethandlestream(*p.data_pointer, nullptr);
  EXPECT_EQ(handlestream(*q.data_pointer), nullptr);  // every copy knows
  std::FILE *other = std::tmpfile();                  // likely in the same place
  const int descriptor = fileno(other);
  dereferencepoint(&p);
  dereferencepoint(&q);
  EXPECT_TRUE(isopen(descriptor));
  std::fclose(other);
}

// A stream opened anew is the copies' stream too.
TEST_F(Lifetimes, AReopenedStream) {
  Point &p = hold(filespace(std::tmpfile()));
  Point &q = holdcopy(p);
  std::fclose(handlestream(*p.data_pointer));
  std::FILE *stream = std::tmpfile();
  const int descriptor = fileno(stream);
  sethandlestream(*p.data_pointer, stream);
  EXPECT_EQ(handlestream(*q.data_pointer), stream);
  dereferencepoint(&p);
  EXPECT_TRUE(isopen(descriptor));
  dereferencepoint(&q);
  EXPECT_FALSE(isopen(descriptor));
}

}  // namespace
