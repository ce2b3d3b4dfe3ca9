# The README's commands. `make run` is the main job, `make test` runs every test.
# Each build lives in its own folder so the kinds never mix.
BUILD       ?= build
JOBS        ?= $(shell nproc)
FUZZ_SECONDS ?= 30
CMAKE_FLAGS ?=

.PHONY: all run test test32 wine-test sanitize tsan bench fuzz fuzz-merge coverage deps configure build clean

all: build

deps:
	@scripts/install-deps.sh

$(BUILD)/build.ninja: | deps
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKIV_WERROR=ON \
	      -DKIV_BUILD_BENCH=OFF $(CMAKE_FLAGS)

configure: $(BUILD)/build.ninja

build: deps configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# The 32-bit lane: gcc -m32 over a private i386 sysroot (docs/platform.md), where vector
# images' pointer words are plain addresses. Then the 64-bit kivutil and the 32-bit one
# must read each other's vector files alike.
BUILD32   ?= build-32
SYSROOT32 ?= $(abspath $(BUILD32))/sysroot
test32: configure
	@scripts/install-deps.sh --i386
	@scripts/fetch-i386-sysroot.sh $(SYSROOT32)
	cmake -S . -B $(BUILD32) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKIV_WERROR=ON -DKIV_BUILD_BENCH=OFF \
	      -DCMAKE_TOOLCHAIN_FILE=$(CURDIR)/cmake/linux-i386.cmake -DKIV_I386_SYSROOT=$(SYSROOT32) $(CMAKE_FLAGS)
	cmake --build $(BUILD32) -j $(JOBS)
	cd $(BUILD32) && ctest --output-on-failure -j $(JOBS)
	cmake --build $(BUILD) -j $(JOBS) --target kivutil
	emulator=$$(ls $(SYSROOT32)/host/qemu-i386 2>/dev/null || true); \
	    scripts/vector-crosscheck.sh $(BUILD)/tools/kivutil/kivutil "$$emulator $(BUILD32)/tools/kivutil/kivutil"

run: build
	@scripts/tour.sh $(BUILD)/tools/kivutil/kivutil

sanitize: deps
	cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKIV_SANITIZE=ON -DKIV_WERROR=ON \
	      -DKIV_BUILD_BENCH=OFF -DKIV_BUILD_TOOLS=ON
	cmake --build build-sanitize -j $(JOBS)
	cd build-sanitize && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	    ctest --output-on-failure -j $(JOBS)

# The platform's threads, events, mutexes, message queues and registry, and the runtime
# services and the tick timer built on them, under ThreadSanitizer.
TSAN_TESTS = test_platform_win32 test_platform_mfc test_utils_runtime test_utils_ui
tsan: deps
	cmake -S . -B build-tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKIV_WERROR=ON \
	      -DKIV_BUILD_BENCH=OFF -DKIV_BUILD_TOOLS=OFF \
	      -DCMAKE_CXX_FLAGS="-fsanitize=thread" -DCMAKE_C_FLAGS="-fsanitize=thread" \
	      -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=thread" -DCMAKE_SHARED_LINKER_FLAGS="-fsanitize=thread" \
	      -DCMAKE_MODULE_LINKER_FLAGS="-fsanitize=thread"
	cmake --build build-tsan -j $(JOBS) --target $(TSAN_TESTS)
	@for t in $(TSAN_TESTS); do echo "== $$t"; \
	    TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" build-tsan/tests/$$t || exit 1; done

bench: deps
	cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DKIV_BUILD_BENCH=ON -DKIV_BUILD_TESTS=OFF
	cmake --build build-bench -j $(JOBS)
	@for b in build-bench/bench/bench_*; do echo "== $$b"; $$b --benchmark_counters_tabular=true || exit 1; done

fuzz: deps
	CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	      -DKIV_BUILD_FUZZ=ON -DKIV_BUILD_TESTS=OFF -DKIV_BUILD_BENCH=OFF -DKIV_BUILD_TOOLS=OFF \
	      -DCMAKE_CXX_FLAGS="-fsanitize=fuzzer-no-link,address,undefined" \
	      -DCMAKE_C_FLAGS="-fsanitize=fuzzer-no-link,address,undefined"
	cmake --build build-fuzz -j $(JOBS)
	@for f in build-fuzz/fuzz/fuzz_*; do \
	    name=$$(basename $$f); mkdir -p build-fuzz/corpus/$$name; \
	    seeds=""; [ -d fuzz/corpus/$$name ] && seeds=fuzz/corpus/$$name; \
	    echo "== $$name ($(FUZZ_SECONDS) s)"; \
	    $$f -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 build-fuzz/corpus/$$name $$seeds || exit 1; \
	done

# Folds the inputs of the last fuzz run that reached new code into the kept corpora,
# minimised (each kept input adds coverage the others lack).
fuzz-merge:
	@for f in build-fuzz/fuzz/fuzz_*; do \
	    name=$$(basename $$f); mkdir -p fuzz/corpus/$$name; \
	    $$f -merge=1 fuzz/corpus/$$name build-fuzz/corpus/$$name 2>&1 | grep -E "MERGE-OUTER: [0-9]+ new files" || exit 1; \
	done

# Line and branch coverage of platform/ and utils/, per folder, from the whole test run.
# Branches are counted without the ones the compiler adds for exceptions.
coverage: deps
	cmake -S . -B build-coverage -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKIV_WERROR=ON \
	      -DKIV_BUILD_BENCH=OFF -DKIV_BUILD_TOOLS=ON \
	      -DCMAKE_CXX_FLAGS="--coverage -O0" -DCMAKE_C_FLAGS="--coverage -O0" \
	      -DCMAKE_EXE_LINKER_FLAGS="--coverage" -DCMAKE_SHARED_LINKER_FLAGS="--coverage"
	cmake --build build-coverage -j $(JOBS)
	find build-coverage -name '*.gcda' -delete
	# The installed-package check links a consumer without --coverage against these
	# instrumented libraries, so it cannot link here; make test runs it.
	cd build-coverage && ctest --output-on-failure -j $(JOBS) -E '^installed_package_consumer$$'
	gcovr -r . --object-directory build-coverage --exclude-directories 'build-coverage/CMakeFiles' \
	      --gcov-ignore-parse-errors --filter 'platform/' --filter 'utils/' \
	      --exclude-throw-branches --exclude-unreachable-branches -j $(JOBS) \
	      --json-summary build-coverage/coverage.json --print-summary
	@scripts/coverage-summary.py build-coverage/coverage.json

# The Windows build: mingw-w64 against the real <windows.h>, its tests run under Wine in a
# prefix inside the build folder, with no display (see docs/platform.md).
WINE_TESTS ?=
# Then the Linux kivutil and the Windows one must read each other's vector files alike.
# Both are given the same host file names: under Wine the current drive is Z:, the host's
# root, so '/tmp/x.vec' names the same file for both.
wine-test: configure
	@scripts/install-deps.sh --wine
	cmake -S . -B build-wine -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake \
	      -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKIV_WERROR=ON -DKIV_BUILD_BENCH=OFF -DKIV_BUILD_TOOLS=ON
	cmake --build build-wine -j $(JOBS) $(if $(WINE_TESTS),--target $(WINE_TESTS))
	cd build-wine && ../cmake/wine-run.sh wineboot -i >/dev/null 2>&1
	cd build-wine && ctest --output-on-failure -j 1 $(if $(WINE_TESTS),-R '$(subst $() ,|,$(WINE_TESTS))')
	cmake --build build-wine -j $(JOBS) --target kivutil
	cmake --build $(BUILD) -j $(JOBS) --target kivutil
	scripts/vector-crosscheck.sh $(BUILD)/tools/kivutil/kivutil "cmake/wine-run.sh build-wine/tools/kivutil/kivutil.exe"

clean:
	rm -rf build build-sanitize build-tsan build-bench build-fuzz build-coverage build-32 build-wine
