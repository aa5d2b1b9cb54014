# Convenience wrapper around CMake. Every target installs what is missing first.
#   make demo   build everything and run the zthost demo
#   make test   build and run the whole test suite: plain, ASan+UBSan, the
#               fuzz smoke run and the ThreadSanitizer concurrency test
#   make bench  build and run the benchmarks
#   make fuzz   build the fuzz targets with clang and run each for FUZZ_SECONDS,
#               FUZZ_JOBS at a time (libFuzzer's final statistics per target)
#   make fuzz-smoke   each fuzz target briefly on its seeds and committed corpus
#   make fuzz-merge   add the coverage of the last long runs to fuzz/corpus
#   make test-tsan    the concurrency test under ThreadSanitizer

JOBS        ?= $(shell nproc)
BUILD_DIR   ?= build
ASAN_DIR    ?= build-asan
FUZZ_DIR    ?= build-fuzz
TSAN_DIR    ?= build-tsan
FUZZ_SECONDS ?= 60
FUZZ_JOBS   ?= 1
SMOKE_SECONDS ?= 4

PACKAGES := cmake make g++ pkg-config qtbase5-dev libssl-dev libgtest-dev \
            libbenchmark-dev ca-certificates openssl
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

.PHONY: deps build demo test test-plain test-asan test-tsan bench fuzz fuzz-build fuzz-smoke \
        fuzz-merge clean

deps:
	$(call install_missing,$(PACKAGES))

build: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release
	cmake --build $(BUILD_DIR) -j $(JOBS)

demo: build
	$(BUILD_DIR)/bin/zthost demo

test: test-plain test-asan fuzz-smoke test-tsan

test-plain: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

test-asan: deps
	cmake -S . -B $(ASAN_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZTUTIL_SANITIZE=ON \
	  -DZTUTIL_BUILD_BENCH=OFF
	cmake --build $(ASAN_DIR) -j $(JOBS)
	ctest --test-dir $(ASAN_DIR) --output-on-failure -j $(JOBS)

bench: build
	@for b in $(BUILD_DIR)/bin/bench_*; do echo "== $$b"; $$b; done

# Only the library's objects and the targets (-O1 as usual for fuzzing).
fuzz-build: deps
	$(call install_missing,$(FUZZ_PACKAGES))
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only" \
	  -DZTUTIL_FUZZ=ON -DZTUTIL_BUILD_TESTS=OFF -DZTUTIL_BUILD_BENCH=OFF -DZTUTIL_BUILD_TOOLS=OFF
	cmake --build $(FUZZ_DIR) -j $(JOBS)

fuzz: fuzz-build
	FUZZ_SECONDS=$(FUZZ_SECONDS) FUZZ_JOBS=$(FUZZ_JOBS) fuzz/run_fuzzers.sh long $(FUZZ_DIR)

fuzz-smoke: fuzz-build
	FUZZ_SECONDS=$(SMOKE_SECONDS) FUZZ_JOBS=$(JOBS) fuzz/run_fuzzers.sh smoke $(FUZZ_DIR)

fuzz-merge: fuzz-build
	FUZZ_JOBS=$(JOBS) fuzz/run_fuzzers.sh merge $(FUZZ_DIR)

# GCC 12's ThreadSanitizer needs a narrower address-space layout than some
# kernels randomise: the run goes without randomisation where that is allowed.
NO_ASLR := $(shell setarch $$(uname -m) -R true 2>/dev/null && echo setarch $$(uname -m) -R)

# Only the library's objects and the concurrency test.
test-tsan: deps
	cmake -S . -B $(TSAN_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZTUTIL_SANITIZE_THREAD=ON \
	  -DZTUTIL_BUILD_BENCH=OFF -DZTUTIL_BUILD_TOOLS=OFF
	cmake --build $(TSAN_DIR) -j $(JOBS) --target test_concurrency
	$(NO_ASLR) ctest --test-dir $(TSAN_DIR) --output-on-failure -R '^Concurrency\.'

clean:
	rm -rf $(BUILD_DIR) $(ASAN_DIR) $(FUZZ_DIR) $(TSAN_DIR)
