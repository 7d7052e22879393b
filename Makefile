# Thin wrapper over the CMake presets. `make demo` and `make test` are the two
# commands of the README; both install missing Debian packages first.
.PHONY: deps build demo test asan bench clean

DEMO_FILE ?= build/demo.zmf

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

asan: deps
	cmake --preset asan
	cmake --build --preset asan
	ctest --preset asan

bench: build
	@for b in build/release/bench/bench_*; do echo "== $$b"; $$b --benchmark_counters_tabular=true || exit 1; done

clean:
	rm -rf build
