# The targets. CMake does the work; every target first installs what it lacks, where it may.
#
#   make run      builds and starts the prompt, or runs what is piped in (ARGS="-q" passes options on)
#   make prompt   builds and starts the prompt with history, completion and help (ARGS="--vi -- -c4" passes options on)
#   make docs     builds the pages as a site, build/site/index.html
#   make install  puts all of it below PREFIX (/usr/local), DESTDIR ahead of that; make uninstall takes it away again
#   make package  builds build-package/morvik_*.deb and .tar.gz, the same bytes from the same commit; test-package builds it
#                 twice, compares, and installs it into a bare Debian
#   make test     every test; test-debug, test-loop, test-asan, test-tsan, test-checking: the same in those builds
#                 (TESTS="REGEX" chooses by name)
#   make bless    rewrites expectations of transcripts (NAMES="folder folder/name.morvik" chooses); bless-lists: the lists
#                 that unit tests compare with; read the difference
#   make lint     format, clang-tidy and the lints
#   make format   formats
#   make fuzz     fuzzes for SECONDS, and proves that a planted bug is found
#   make campaign runs all that looks for faults at random, for SECONDS in all, from SEED on
#   make bench    measures
#   make mutate   plants SAMPLE changes in the sources, drawn by SEED, and names those that no test finds (MUTATE="--again
#                 --report --only src/files" passes options on)

ARGS ?=
PREFIX ?= /usr/local
NAMES ?=
TESTS ?= .
SECONDS ?= 60
SAMPLE ?= 300
SEED ?= 1
MUTATE ?=
JOBS ?= $(shell nproc)
export JOBS

.DEFAULT_GOAL := build
.PHONY: build run prompt docs install uninstall package test-package test bless bless-lists lint format fuzz campaign bench mutate clean

build:
	@tools/need build
	@tools/build release

# Standard output is Morvik's alone, and so is what is piped in. A person sees the build.
run:
	@tools/need build
	@if [ -t 0 ]; then tools/build release programs; else tools/build -q release programs; fi
	@exec build/morvik $(ARGS)

prompt:
	@tools/need build prompt
	@tools/build -q release programs
	@exec tools/python prompt_toolkit pygments -- python/morvik-prompt --interpreter build/morvik $(ARGS)

docs:
	@tools/need docs
	@tools/python mkdocs pygments -- -B web/build build/site

install:
	@tools/need build
	@tools/build -q release installable
	@cmake --install build --prefix '$(PREFIX)'

uninstall:
	@cmake -P '$(DESTDIR)$(PREFIX)/share/morvik/uninstall.cmake'

# The time that a package bears is that of its commit, where there is one.
package: export SOURCE_DATE_EPOCH ?= $(or $(shell git log -1 --format=%ct 2>/dev/null),$(shell date +%s))
package:
	@tools/need build docs package
	@tools/build package
	@cd build-package && rm -f *.deb *.tar.gz && cpack -G DEB && cpack -G TGZ
	@rm -rf build-package/_CPack_Packages
	@ls build-package/*.deb build-package/*.tar.gz

test-package:
	@tools/need build docs package test-package
	@python3 -B tests/packages/run.py

test:
	@tools/need build test
	@tools/build release
	@ctest --test-dir build --output-on-failure -j $(JOBS) -R '$(TESTS)'

test-%:
	@tools/need build test
	@tools/build $*
	@ctest --test-dir build-$* --output-on-failure -j $(JOBS) -R '$(TESTS)'

bless:
	@tools/need build test
	@tools/build release morvik
	@python3 -B tests/transcripts/run.py --bless build/morvik $(NAMES)

bless-lists:
	@tools/need build test
	@tools/build release unit_tests
	@build/tests/unit_tests --update --gtest_brief=1

lint:
	@tools/need build test lint
	@tools/build -q debug
	@tools/lint build-debug

format:
	@tools/need lint
	@git ls-files -co --exclude-standard '*.cpp' '*.h' | xargs clang-format -i

fuzz:
	@tools/need build fuzz
	@tests/fuzz/run $(SECONDS)

campaign: SECONDS = 3600
campaign:
	@tools/need build test fuzz
	@for preset in release asan checking tsan; do tools/build $$preset morvik || exit 1; done
	@tools/build fuzz
	@python3 -B tests/campaign/run.py --seconds $(SECONDS) --seed $(SEED) --jobs $(JOBS)

bench:
	@tools/need build bench
	@tools/build release
	@tools/bench build

mutate:
	@tools/need build test
	@python3 -B tests/mutation/mutate.py --sample $(SAMPLE) --seed $(SEED) --jobs $(JOBS) $(MUTATE)

clean:
	@rm -rf build build-*
