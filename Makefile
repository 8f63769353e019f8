# The two commands a fresh machine needs: `make run` and `make test` (make.sh
# installs make itself first, for a machine that has none).
BUILD_DIR     ?= build
SANITIZED_DIR ?= build-sanitized
THREADS_DIR   ?= build-threads
JOBS          ?= $(shell nproc)
FUZZ_SECONDS  ?= 600
REPEAT        ?= 100
CMAKE_GEN     := -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
CLANG         := CC=clang CXX=clang++

.PHONY: deps configure build run test test-plain sanitized-build test-sanitized check-threads fuzz bench

deps:
	@if [ "$$(id -u)" -eq 0 ]; then scripts/install-deps.sh; else sudo scripts/install-deps.sh; fi

configure: deps
	cmake -S . -B $(BUILD_DIR) $(CMAKE_GEN)

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

# Only the host and the libraries it links: tests and benchmarks wait for
# `make test` and `make bench`.
run: configure
	cmake --build $(BUILD_DIR) -j $(JOBS) --target torvex
	$(BUILD_DIR)/torvex/host/torvex

test: test-plain test-sanitized check-threads

test-plain: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

# The whole suite again under AddressSanitizer and UndefinedBehaviorSanitizer,
# built with clang so that the same build holds the fuzzers; their short smoke
# runs are part of this suite.
sanitized-build: deps
	$(CLANG) cmake -S . -B $(SANITIZED_DIR) $(CMAKE_GEN) -DTORVEX_SANITIZE=ON -DTORVEX_BUILD_FUZZERS=ON \
	  -DTORVEX_BUILD_BENCH=OFF
	cmake --build $(SANITIZED_DIR) -j $(JOBS)

test-sanitized: sanitized-build
	ASAN_OPTIONS=detect_leaks=0 ctest --test-dir $(SANITIZED_DIR) --output-on-failure -j $(JOBS)

# The background load's life cycle under ThreadSanitizer, REPEAT times each.
# Qt and OpenImageIO are not built for the checker: what happens inside them is
# left out, and tests/thread-checker.supp says what else and why.
check-threads: deps
	$(CLANG) cmake -S . -B $(THREADS_DIR) $(CMAKE_GEN) -DTORVEX_SANITIZE_THREADS=ON -DTORVEX_BUILD_BENCH=OFF
	cmake --build $(THREADS_DIR) -j $(JOBS) --target load_life_cycle_test
	TSAN_OPTIONS="ignore_noninstrumented_modules=1 suppressions=$(CURDIR)/tests/thread-checker.supp halt_on_error=1 exitcode=66" \
	  TORVEX_REPEAT=$(REPEAT) QT_QPA_PLATFORM=offscreen $(THREADS_DIR)/tests/model/load_life_cycle_test

# Every fuzzer for FUZZ_SECONDS, side by side, from the committed seeds.
fuzz: sanitized-build
	fuzz/run-all.sh $(SANITIZED_DIR)/fuzz $(FUZZ_SECONDS)

# Every benchmark, then one table of figure, limit, ratio and target.
bench: build
	sh bench/report.sh $(BUILD_DIR)
