# The two commands a fresh machine needs: `make run` and `make test`.
BUILD_DIR  ?= build
ASAN_DIR   ?= build-asan
JOBS       ?= $(shell nproc)
CMAKE_GEN  := -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo

.PHONY: deps build run test test-plain test-sanitized bench

deps:
	@if [ "$$(id -u)" -eq 0 ]; then scripts/install-deps.sh; else sudo scripts/install-deps.sh; fi

build: deps
	cmake -S . -B $(BUILD_DIR) $(CMAKE_GEN)
	cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	$(BUILD_DIR)/torvex/host/torvex

test: test-plain test-sanitized

test-plain: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

# The whole suite again under AddressSanitizer and UndefinedBehaviorSanitizer.
test-sanitized: deps
	cmake -S . -B $(ASAN_DIR) $(CMAKE_GEN) -DTORVEX_SANITIZE=ON -DTORVEX_BUILD_BENCH=OFF
	cmake --build $(ASAN_DIR) -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=0 ctest --test-dir $(ASAN_DIR) --output-on-failure -j $(JOBS)

bench: build
	@for b in $(BUILD_DIR)/bench/bench_*; do [ -x "$$b" ] && "$$b"; done
