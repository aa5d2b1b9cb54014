# Convenience wrapper around CMake. Every target installs what is missing first.
#   make demo   build everything and run the zthost demo
#   make test   build and run the whole test suite: plain, ASan+UBSan, the
#               fuzz smoke run, the ThreadSanitizer concurrency test and the
#               arm64 cross build under qemu (make test-arm64)
#   make bench  build and run the benchmarks
#   make fuzz   build the fuzz targets with clang and run each for FUZZ_SECONDS,
#               FUZZ_JOBS at a time (libFuzzer's final statistics per target)
#   make fuzz-smoke   each fuzz target briefly on its seeds and committed corpus
#   make fuzz-merge   add the coverage of the last long runs to fuzz/corpus
#   make test-tsan    the concurrency test under ThreadSanitizer
#   make package  build the Debian packages into $(DEB_DIR)/packages

JOBS        ?= $(shell nproc)
BUILD_DIR   ?= build
ASAN_DIR    ?= build-asan
FUZZ_DIR    ?= build-fuzz
ARM64_DIR   ?= build-arm64
ARM64_SM2_DIFF_CASES ?= 200
DEB_DIR     ?= build-deb
TSAN_DIR    ?= build-tsan
FUZZ_SECONDS ?= 60
FUZZ_JOBS   ?= 1
SMOKE_SECONDS ?= 4

# dpkg-dev and file build the Debian packages (dpkg-shlibdeps,
# dpkg-buildflags); lintian checks them and python3-pytest runs the tests of
# the Python module, both in the test suite.
PACKAGES := cmake make g++ pkg-config qtbase5-dev libssl-dev libgtest-dev \
            libbenchmark-dev libzip-dev ca-certificates openssl dpkg-dev file lintian \
            python3 python3-pytest
FUZZ_PACKAGES := clang libclang-rt-dev
# glibc's detached debugging symbols: with them ThreadSanitizer names glibc's
# functions in its reports, which the one suppression in tests/tsan.supp needs.
TSAN_PACKAGES := libc6-dbg
# Cross build for arm64 (Debian multiarch): the cross compiler, moc of the
# host's Qt tools, qemu-user to run the tests, the target's libraries.
ARM64_PACKAGES := g++-aarch64-linux-gnu qtbase5-dev-tools qemu-user \
                  qtbase5-dev:arm64 libssl-dev:arm64 libgtest-dev:arm64 libzip-dev:arm64

SUDO := $(shell [ "$$(id -u)" -eq 0 ] || echo sudo)

define install_missing
	@missing=$$(for p in $(1); do \
	    dpkg-query -W -f='$${Status}\n' $$p 2>/dev/null | grep -q '^install ok installed' || echo $$p; \
	  done); \
	if [ -n "$$missing" ]; then \
	  echo "installing:" $$missing; \
	  for arch in $$(printf '%s\n' $$missing | sed -n 's/^[^:]*:\(.*\)$$/\1/p' | sort -u); do \
	    dpkg --print-foreign-architectures | grep -qx $$arch || $(SUDO) dpkg --add-architecture $$arch; \
	  done; \
	  $(SUDO) apt-get update && \
	  DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y --no-install-recommends $$missing; \
	fi
endef

.PHONY: deps build demo test test-plain test-asan test-tsan test-arm64 bench fuzz fuzz-build \
        fuzz-smoke fuzz-merge package clean

deps:
	$(call install_missing,$(PACKAGES))

build: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release
	cmake --build $(BUILD_DIR) -j $(JOBS)

demo: build
	$(BUILD_DIR)/bin/zthost demo

test: test-plain test-asan fuzz-smoke test-tsan test-arm64

test-plain: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

test-asan: deps
	cmake -S . -B $(ASAN_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZTUTIL_SANITIZE=ON \
	  -DZTUTIL_BUILD_BENCH=OFF
	cmake --build $(ASAN_DIR) -j $(JOBS)
	ctest --test-dir $(ASAN_DIR) --output-on-failure -j $(JOBS)

# Warnings are errors here; every test runs under qemu-user (SM3 once more on
# a CPU model without the SM3 instructions), then the zthost demo.
test-arm64: deps
	$(call install_missing,$(ARM64_PACKAGES))
	cmake -S . -B $(ARM64_DIR) --no-warn-unused-cli -DCMAKE_BUILD_TYPE=Release \
	  -DCMAKE_TOOLCHAIN_FILE=$(CURDIR)/cmake/toolchain-aarch64-linux-gnu.cmake \
	  -DCMAKE_CXX_FLAGS=-Werror -DZTUTIL_BUILD_BENCH=OFF -DZTUTIL_SM2_DIFF_CASES=$(ARM64_SM2_DIFF_CASES)
	cmake --build $(ARM64_DIR) -j $(JOBS)
	ctest --test-dir $(ARM64_DIR) --output-on-failure -j $(JOBS)
	qemu-aarch64 $(ARM64_DIR)/bin/zthost demo

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
	$(call install_missing,$(TSAN_PACKAGES))
	cmake -S . -B $(TSAN_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZTUTIL_SANITIZE_THREAD=ON \
	  -DZTUTIL_BUILD_BENCH=OFF -DZTUTIL_BUILD_TOOLS=OFF
	cmake --build $(TSAN_DIR) -j $(JOBS) --target test_concurrency
	$(NO_ASLR) ctest --test-dir $(TSAN_DIR) --output-on-failure -R '^Concurrency\.'

package: deps
	cmake -DBUILD_DIR=$(DEB_DIR) -DJOBS=$(JOBS) -P cmake/build_packages.cmake
	@ls $(DEB_DIR)/packages/*.deb

clean:
	rm -rf $(BUILD_DIR) $(ASAN_DIR) $(FUZZ_DIR) $(TSAN_DIR) $(ARM64_DIR) $(DEB_DIR)
