// ISBOOLEAN, ISBINARY, ISNUMBER, ISCARTESIAN and ISPOLAR: is the form of an element exactly this one?
#include "arithmetic/monadic.h"

namespace morvik {

namespace {

template <std::uint16_t form>
struct FormTest : FlopCounter {
  template <class T>
  Truth operator()(const T &, Heading head) {
    return {formof(head.word) == form};
  }
};

}  // namespace

MONADIC_SCALAR(isboolean, FormTest<forms::BOOLEAN>)
MONADIC_SCALAR(isbinary, FormTest<forms::BINARY>)
MONADIC_SCALAR(isnumber, FormTest<forms::NUMBER>)
MONADIC_SCALAR(iscartesian, FormTest<forms::CARTESIAN>)
MONADIC_SCALAR(ispolar, FormTest<forms::POLAR>)

}  // namespace morvik
