# The public interface of the project. Every target bootstraps the machine
# first (a no-op when everything is installed).
#   make test    build both trees and run every test
#   make dist    stage the installation into build/windows/dist
#   make bench   run the benchmarks (figures on stdout and in build/bench.txt)
#   make fuzz    run every libFuzzer target for FUZZ_SECONDS (default 60)
#   make demo    the main job: the add-in in the mail-client stand-in, scripted session
#   make stress  the add-in under load in the stand-ins (STRESS_SEED=n repeats a run)
#   make screenshots  every window, English and German, into docs/screens/ (SCREENS_DPI=120)
#   make format  clang-format every source file in place

BUILD ?= build
# Compiler-cache entries are shared between checkouts of the tree.
export CCACHE_BASEDIR ?= $(CURDIR)
export CCACHE_NOHASHDIR ?= 1
JOBS ?= $(shell nproc)
FUZZ_SECONDS ?= 60
WIN := $(BUILD)/windows
NAT := $(BUILD)/native
FZ := $(BUILD)/fuzz
NB := $(BUILD)/native-bench

.PHONY: all test dist bench fuzz demo stress screenshots format format-check bootstrap \
        windows native clean

all: windows native

bootstrap:
	@scripts/bootstrap.sh

$(WIN)/CMakeCache.txt: | bootstrap
	cmake -S . -B $(WIN) -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake \
	      -DCMAKE_BUILD_TYPE=Release

$(NAT)/CMakeCache.txt: | bootstrap
	CC=clang CXX=clang++ cmake -S . -B $(NAT) -DCMAKE_BUILD_TYPE=Debug

$(NB)/CMakeCache.txt: | bootstrap
	CC=clang CXX=clang++ cmake -S . -B $(NB) -DCMAKE_BUILD_TYPE=Release -DVELK_SANITIZE=OFF

$(FZ)/CMakeCache.txt: | bootstrap
	CC=clang CXX=clang++ cmake -S . -B $(FZ) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELK_FUZZ=ON

windows: bootstrap $(WIN)/CMakeCache.txt
	cmake --build $(WIN) -j$(JOBS)

native: bootstrap $(NAT)/CMakeCache.txt
	cmake --build $(NAT) -j$(JOBS)

test: windows native
	scripts/run-tests.sh unit $(NAT) $(WIN)

dist: windows
	cmake --build $(WIN) --target dist

bench: SHELL := /bin/bash
bench: windows bootstrap $(NB)/CMakeCache.txt
	cmake --build $(NB) -j$(JOBS)
	scripts/run-tests.sh bench $(NB) $(WIN) 2>&1 | tee $(BUILD)/bench.txt; exit $${PIPESTATUS[0]}

fuzz: bootstrap $(FZ)/CMakeCache.txt
	cmake --build $(FZ) --target fuzz_all -j$(JOBS)
	scripts/run-fuzz.sh $(FZ) $(FUZZ_SECONDS)

# Builds only what the run needs, then runs it; not part of `make test`.
stress: bootstrap $(WIN)/CMakeCache.txt
	cmake --build $(WIN) --target dist addin_stress -j$(JOBS)
	VELK_WINE_TIMEOUT=900 scripts/wine-session.sh $(WIN) scripts/wine-run.sh $(WIN)/addin/addin_stress.exe

# Builds only what the run needs (the staged installation, the stand-ins,
# the driver), then runs it; DEMO_MODE=oe|wmail picks the client's mode.
demo: bootstrap $(WIN)/CMakeCache.txt
	cmake --build $(WIN) --target dist demo_driver -j$(JOBS)
	scripts/demo.sh $(BUILD)

# Builds only what the run needs; not part of `make test`. SCREENS_DPI=120
# writes docs/screens/<lang>-120dpi/.
screenshots: bootstrap $(WIN)/CMakeCache.txt
	cmake --build $(WIN) --target dist velk_screens -j$(JOBS)
	scripts/screenshots.sh $(WIN)

FORMAT_FILES = $(shell git ls-files -co --exclude-standard '*.cpp' '*.h' | grep -v '^build/')

format:
	clang-format -i $(FORMAT_FILES)

format-check:
	clang-format --dry-run --Werror $(FORMAT_FILES)

clean:
	rm -rf $(BUILD)
