# Convenience wrapper around CMake. Every target installs what is missing first.
#   make demo   build everything and run the zthost demo
#   make test   build and run the whole test suite, plain and with sanitizers
#   make bench  build and run the benchmarks
#   make fuzz   build the fuzz targets with clang and run each for FUZZ_SECONDS

JOBS        ?= $(shell nproc)
BUILD_DIR   ?= build
ASAN_DIR    ?= build-asan
FUZZ_DIR    ?= build-fuzz
FUZZ_SECONDS ?= 60

PACKAGES := cmake make g++ pkg-config qtbase5-dev libssl-dev libgtest-dev \
            libbenchmark-dev libzip-dev ca-certificates openssl
FUZZ_PACKAGES := clang libclang-rt-dev

SUDO := $(shell [ "$$(id -u)" -eq 0 ] || echo sudo)

define install_missing
	@missing=$$(for p in $(1); do \
	    dpkg-query -W -f='$${Status}\n' $$p 2>/dev/null | grep -q '^install ok installed' || echo $$p; \
	  done); \
	if [ -n "$$missing" ]; then \
	  echo "installing:" $$missing; \
	  $(SUDO) apt-get update && \
	  DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y --no-install-recommends $$missing; \
	fi
endef

.PHONY: deps build demo test test-plain test-asan bench fuzz clean

deps:
	$(call install_missing,$(PACKAGES))

build: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release
	cmake --build $(BUILD_DIR) -j $(JOBS)

demo: build
	$(BUILD_DIR)/bin/zthost demo

test: test-plain test-asan

test-plain: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

test-asan: deps
	cmake -S . -B $(ASAN_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZTUTIL_SANITIZE=ON \
	  -DZTUTIL_BUILD_BENCH=OFF
	cmake --build $(ASAN_DIR) -j $(JOBS)
	ctest --test-dir $(ASAN_DIR) --output-on-failure -j $(JOBS)

bench: build
	@for b in $(BUILD_DIR)/bin/bench_*; do echo "== $$b"; $$b; done

fuzz: deps
	$(call install_missing,$(FUZZ_PACKAGES))
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DZTUTIL_FUZZ=ON -DZTUTIL_BUILD_TESTS=OFF -DZTUTIL_BUILD_BENCH=OFF -DZTUTIL_BUILD_TOOLS=OFF
	cmake --build $(FUZZ_DIR) -j $(JOBS)
	@for f in $(FUZZ_DIR)/bin/fuzz_*; do \
	  echo "== $$f ($(FUZZ_SECONDS) s)"; \
	  mkdir -p $(FUZZ_DIR)/corpus/$$(basename $$f); \
	  $$f -max_total_time=$(FUZZ_SECONDS) $(FUZZ_DIR)/corpus/$$(basename $$f) fuzz/seeds || exit 1; \
	done

clean:
	rm -rf $(BUILD_DIR) $(ASAN_DIR) $(FUZZ_DIR)
