# The two commands for a fresh machine:
#   make run    set up, build, run the main job
#   make test   set up, build, pass all tests through CTest
BUILD ?= build
JOBS  ?= $(shell nproc)
CMAKE_FLAGS ?= -DCMAKE_BUILD_TYPE=Release

.PHONY: all setup configure build test run bench clean

all: build

setup:
	@scripts/setup

configure: setup
	@if [ ! -f $(BUILD)/build.ninja ]; then cmake -S . -B $(BUILD) -G Ninja $(CMAKE_FLAGS); fi

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD) --output-on-failure --timeout 300 -j $(JOBS)

run: build
	scripts/run-example $(BUILD)

bench: build
	@for b in tarno-bench tarno-bench-frontend tarno-bench-contour tarno-bench-display \
	         tarno-bench-basemaps tarno-bench-edit tarno-bench-edit-map tarno-bench-regional tarno-bench-hsolve; do \
	  if [ -x $(BUILD)/bin/$$b ]; then echo "== $$b"; $(BUILD)/bin/$$b || exit 1; fi; \
	done

clean:
	rm -rf $(BUILD)
