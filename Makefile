# Thin wrapper over the CMake presets. `make demo` and `make test` are the two
# commands of the README; both install missing Debian packages first.
.PHONY: deps build demo test asan bench fuzz clean

DEMO_FILE ?= build/demo.zmf
# Seconds each fuzz target runs for (`make fuzz`); clang only.
FUZZ_SECONDS ?= 60
FUZZ_TARGETS = file tables operations

deps:
	@./scripts/install-deps.sh

build: deps
	cmake --preset release
	cmake --build --preset release

demo: build
	rm -f $(DEMO_FILE)
	./build/release/tools/tessmeta demo $(DEMO_FILE)

test: build
	ctest --preset release

# The sanitizer build is clang's and also builds the fuzz targets (`make fuzz`).
asan:
	@./scripts/install-deps.sh fuzz
	cmake --preset asan
	cmake --build --preset asan
	ctest --preset asan

bench: build
	@for b in build/release/bench/bench_*; do echo "== $$b"; $$b --benchmark_counters_tabular=true || exit 1; done

# The fuzz targets come from the sanitizer build (build/asan). Each starts from its
# committed seeds (tests/fuzz/corpus/<target>) and keeps what it learns in
# build/asan/corpus/<target>; a finding stops the run with the crashing input saved
# as build/asan/crash-*.
fuzz:
	@./scripts/install-deps.sh fuzz
	cmake --preset asan
	cmake --build --preset asan --target $(addprefix fuzz_,$(FUZZ_TARGETS))
	@for t in $(FUZZ_TARGETS); do \
	  mkdir -p build/asan/corpus/$$t; \
	  echo "== fuzz_$$t for $(FUZZ_SECONDS) s"; \
	  ./build/asan/tests/fuzz/fuzz_$$t -max_total_time=$(FUZZ_SECONDS) -timeout=120 \
	    -rss_limit_mb=4096 -print_final_stats=1 -artifact_prefix=build/asan/ \
	    build/asan/corpus/$$t tests/fuzz/corpus/$$t || exit 1; \
	done

clean:
	rm -rf build
