// The command lines of morvik-run and morvik-check, as getopt_long reads them.
#include "runner/choices.h"

#include <getopt.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace morvik {

namespace {

constexpr char USAGE[] = "usage: morvik-run [options] FILE [words...]\n";
constexpr char CHECK_USAGE[] = "usage: morvik-check [options] FILE...\n";

constexpr char HELP[] =
    "Runs a programme in a file. FILE may be -, the standard input. The words after it are found as ARGUMENTS.\n"
    "\n"
    "  -l, --library NAME     load NAME.morvik first; may stand more than once. A comment NEEDS NAME... at the head\n"
    "                         of the file does the same. It is looked for in the folders that MORVIK_PATH names\n"
    "                         (with : between them), in ../share/morvik/lib from where morvik-run is, and in ../lib,\n"
    "                         in this order\n"
    "  -k, --keep-going       run the texts that follow a message too\n"
    "  -e, --echo             show the top of the stack after each text, as at the prompt\n"
    "  -c, --check            look for mistakes, and run nothing\n"
    "  -p, --processors N     use N threads beside the main one\n"
    "  -u, --unconstrained    allow files in any folder\n"
    "      --confine          allow files below the present folder only, wherever links lead\n"
    "      --profile[=folded] tell at the end where the time went, by function and line; folded: as stacks, for flame\n"
    "                         graphs\n"
    "  -h, --help             show this\n"
    "  -v, --version          show the version\n"
    "\n"
    "Status: 0; 1 after a message; 2 where the command line or a file is of no use; 130 after an interrupt.\n";

constexpr char CHECK_HELP[] =
    "Looks for mistakes in programmes, and runs nothing. FILE may be -, the standard input.\n"
    "\n"
    "  -l, --library NAME  take the names of a library for set, as morvik-run does\n"
    "  -h, --help          show this\n"
    "  -v, --version       show the version\n"
    "\n"
    "Status: 0; 1 where it warned; 2 where the command line or a file is of no use.\n";

constexpr char VERSION[] = MORVIK_VERSION;
constexpr std::uint32_t MOST_PROCESSORS = 1 << 16;

enum LongOnly : int { CONFINE = 256, PROFILE };

constexpr option OPTIONS[] = {{"library", required_argument, nullptr, 'l'},
                              {"keep-going", no_argument, nullptr, 'k'},
                              {"echo", no_argument, nullptr, 'e'},
                              {"check", no_argument, nullptr, 'c'},
                              {"processors", required_argument, nullptr, 'p'},
                              {"unconstrained", no_argument, nullptr, 'u'},
                              {"confine", no_argument, nullptr, CONFINE},
                              {"profile", optional_argument, nullptr, PROFILE},
                              {"help", no_argument, nullptr, 'h'},
                              {"version", no_argument, nullptr, 'v'},
                              {nullptr, 0, nullptr, 0}};

constexpr option CHECK_OPTIONS[] = {{"library", required_argument, nullptr, 'l'},
                                    {"help", no_argument, nullptr, 'h'},
                                    {"version", no_argument, nullptr, 'v'},
                                    {nullptr, 0, nullptr, 0}};

// What the two programs have of their own. The first word that is no option is the file; what follows it is the
// script's, dashes or not, and for morvik-check another file or option.
struct Program {
  const char *usage, *help, *letters;
  const option *options;
};
constexpr Program RUN = {USAGE, HELP, "+l:kecp:uhv", OPTIONS};
constexpr Program CHECK = {CHECK_USAGE, CHECK_HELP, "l:hv", CHECK_OPTIONS};

int misused(const char *what, const char *value) {
  std::fprintf(stderr, "%s: %s: %s\n%s", program_invocation_short_name, what, value, USAGE);
  return STATUS_UNUSABLE;
}

int readprocessors(Choices &choices, const char *text) {
  char *end;
  errno = 0;
  const unsigned long number = std::strtoul(text, &end, 10);
  if (*text < '0' || *text > '9' || *end != 0 || errno != 0 || number > MOST_PROCESSORS)
    return misused("this is no number of processors", text);
  choices.processors = static_cast<std::uint32_t>(number);
  return GOES_ON;
}

int readprofile(Choices &choices, const char *text) {
  if (!text)
    choices.profile = Profile::TABLE;
  else if (std::strcmp(text, "folded") == 0)
    choices.profile = Profile::FOLDED;
  else
    return misused("there is no such profile", text);
  return GOES_ON;
}

int takeoption(Choices &choices, const Program &program, int option) {
  switch (option) {
    case 'l':
      choices.libraries.append(optarg);
      return GOES_ON;
    case 'k':
      choices.keepgoing = true;
      return GOES_ON;
    case 'e':
      choices.echo = true;
      return GOES_ON;
    case 'c':
      choices.check = true;
      return GOES_ON;
    case 'p':
      return readprocessors(choices, optarg);
    case 'u':
      choices.unconstrained = true;
      return GOES_ON;
    case CONFINE:
      choices.confined = true;
      return GOES_ON;
    case PROFILE:
      return readprofile(choices, optarg);
    case 'h':
      std::printf("%s\n%s", program.usage, program.help);
      return STATUS_DONE;
    case 'v':
      std::printf("%s %s\n", program_invocation_short_name, VERSION);
      return STATUS_DONE;
    default:  // getopt_long has said what is wrong
      std::fputs(program.usage, stderr);
      return STATUS_UNUSABLE;
  }
}

int readwords(Choices &choices, const Program &program, int argc, char **argv) {
  choices = {};
  for (int option; (option = getopt_long(argc, argv, program.letters, program.options, nullptr)) != -1;)
    if (const int status = takeoption(choices, program, option); status != GOES_ON) return status;
  if (optind >= argc) {
    std::fprintf(stderr, "%s: no file\n%s", program_invocation_short_name, program.usage);
    return STATUS_UNUSABLE;
  }
  choices.file = argv[optind];
  choices.words = argv + optind + 1;
  choices.wordcount = static_cast<std::size_t>(argc - optind - 1);
  return GOES_ON;
}

}  // namespace

int readchoices(Choices &choices, int argc, char **argv) {
  return readwords(choices, RUN, argc, argv);
}

int readcheckchoices(Choices &choices, int argc, char **argv) {
  const int status = readwords(choices, CHECK, argc, argv);
  choices.check = true;
  return status;
}

}  // namespace morvik
