# What people run. Each target sees to what it needs and builds the default preset.

JOBS ?= $(shell nproc)
BUILD := build/default
PRESET := default
FUZZ_RUNS ?= 10000000
FUZZ_SECONDS ?= 1800

.PHONY: build demo test bulk faults soak bench fuzz clean

build: setup-demo
	@cmake --build --preset default --parallel $(JOBS)

# The main job, on a server of its own, with every step proved.
demo: setup-demo
	@cmake --build --preset default --parallel $(JOBS) --target quennet loopback
	@$(BUILD)/bin/quennet demo

# The tests; those whose servers can't be had are skipped, and it says first which ones and why.
test: setup-test
	@cmake --build --preset default --parallel $(JOBS)
	@cmake --build --preset default --target interop_servers
	@ctest --test-dir $(BUILD) --parallel $(JOBS) --output-on-failure --no-tests=error -LE 'bulk|faults|soak'

# Those that move files of a gibibyte and more through real servers: minutes, and 9 GiB of disk.
bulk: setup-test
	@cmake --build --preset default --parallel $(JOBS)
	@ctest --test-dir $(BUILD) --output-on-failure --no-tests=error -L bulk

# A whole session whose connection breaks behind its n-th byte, for every n and in every way: minutes.
# The tests hold a sample of it.
faults: setup-test
	@cmake --build --preset default --parallel $(JOBS) --target faults_test
	@ctest --test-dir $(BUILD) --parallel $(JOBS) --verbose --no-tests=error -L faults

# 10,000 connections one after the other: what the process holds behind the first hundred and at the
# end. The tests hold a short one.
soak: setup-test
	@cmake --build --preset default --parallel $(JOBS) --target soak_test
	@ctest --test-dir $(BUILD) --verbose --no-tests=error -L soak

# Speed and memory, side by side with other clients where that makes sense.
bench: setup-bench
	@cmake --build --preset default --parallel $(JOBS)
	@$(BUILD)/bin/line_parser_bench
	@$(BUILD)/bin/find_bench
	@bench/transfer_bench.sh $(BUILD)

# The fuzzers, or those that FUZZ names: each for FUZZ_RUNS runs or FUZZ_SECONDS, whichever are over
# first.
fuzz: setup-fuzz
	@cmake --build --preset fuzz --parallel $(JOBS)
	@scripts/fuzz.sh --runs $(FUZZ_RUNS) --seconds $(FUZZ_SECONDS) --jobs $(JOBS) build/clang $(FUZZ)

clean:
	@rm -rf $(BUILD)

# Packages, and a configured build folder.
setup-fuzz: PRESET := clang
setup-%:
	@scripts/setup.sh $*
	@mkdir -p build
	@cmake --preset $(PRESET) > build/configure.log 2>&1 || { cat build/configure.log; exit 1; }
