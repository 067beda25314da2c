# Build, test and demo entry points. Each target installs what is missing.
BUILD      ?= build
BUILD64    := $(BUILD)/x86_64
BUILD32    := $(BUILD)/i686
JOBS       ?= $(shell nproc)
# The zone of the second, local-time pass of 'make test' (ZONE_PASS=0 skips it;
# it runs only when the whole suite runs, i.e. without CTEST_ARGS).
TEST_ZONE  ?= Europe/Berlin
ZONE_PASS  ?= 1
# The display scale of the third pass, every window test again (DPI_PASS=0
# skips it; like the zone pass it runs only without CTEST_ARGS).
TEST_DPI   ?= 144
DPI_PASS   ?= 1
# The order pass: the unit and the window test programs once more, each in
# one process with its tests shuffled (SHUFFLE_PASS=0 skips it; SHUFFLE_SEED=N
# repeats an order; like the other passes it runs only without CTEST_ARGS).
SHUFFLE_PASS ?= 1

.PHONY: all deps build build-i686 dist test smoke-i686 run bench fuzz screenshots clean

all: build

deps:
	@scripts/install-deps.sh

$(BUILD64)/build.ninja $(BUILD64)/Makefile:
	cmake -S . -B $(BUILD64) -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-x86_64-w64-mingw32.cmake

build: deps $(BUILD64)/Makefile
	cmake --build $(BUILD64) -j $(JOBS)

# Configured once; later builds reconfigure by themselves when needed.
$(BUILD32)/Makefile:
	cmake -S . -B $(BUILD32) -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-i686-w64-mingw32.cmake -DMORVANE_BUILD_TESTS=OFF

build-i686: deps $(BUILD32)/Makefile
	cmake --build $(BUILD32) -j $(JOBS)

# The setup programs: the 32-bit release and the 64-bit build, each built
# with its program (installer/), copied into $(BUILD)/dist under the product
# version that CMakeLists.txt gives.
dist: build build-i686
	mkdir -p $(BUILD)/dist
	v=$$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' $(BUILD32)/CMakeCache.txt) && \
	  cp $(BUILD32)/dist/MorvaneGui-$$v-setup.exe $(BUILD64)/dist/MorvaneGui-$$v-x64-setup.exe $(BUILD)/dist/ && \
	  ls -l $(BUILD)/dist/MorvaneGui-$$v-setup.exe $(BUILD)/dist/MorvaneGui-$$v-x64-setup.exe

# Every test under Wine, in one private prefix, display and wineserver; then
# the local-time tests once more in a session started in another time zone,
# the window tests once more at another display scale, and the unit and
# window test programs once more, each in one process in a shuffled order
# (a failure there is not retried). Every pass runs
# even when one before it failed; at the end, every test that passed only
# when run again is listed as flaky, and the exit status is that of the
# passes together.
FLAKY_LIST := $(abspath $(BUILD64))/flaky-tests.txt
# The second passes run only with the whole suite (decided here, not in the
# shell: CTEST_ARGS may hold quotes and '|').
ALL_TESTS  := $(if $(strip $(CTEST_ARGS)),0,1)
test: build
	@rm -f $(FLAKY_LIST); status=0; \
	export MORVANE_FLAKY_LIST=$(FLAKY_LIST); \
	echo "scripts/with-wine.sh $(BUILD64) ctest --test-dir $(BUILD64) --output-on-failure -j 2 $(CTEST_ARGS)"; \
	scripts/with-wine.sh $(BUILD64) ctest --test-dir $(BUILD64) --output-on-failure -j 2 $(CTEST_ARGS) || status=1; \
	if [ "$(ZONE_PASS)$(ALL_TESTS)" = 11 ]; then \
	    MORVANE_TZ=$(TEST_ZONE) scripts/with-wine.sh $(BUILD64) scripts/test-other-zone.sh $(BUILD64) || status=1; fi; \
	if [ "$(DPI_PASS)$(ALL_TESTS)" = 11 ]; then \
	    MORVANE_DPI=$(TEST_DPI) scripts/with-wine.sh $(BUILD64) scripts/test-other-dpi.sh $(BUILD64) || status=1; fi; \
	if [ "$(SHUFFLE_PASS)$(ALL_TESTS)" = 11 ]; then \
	    SHUFFLE_SEED=$(SHUFFLE_SEED) scripts/with-wine.sh $(BUILD64) scripts/test-shuffled.sh $(BUILD64) || status=1; fi; \
	if [ -s $(FLAKY_LIST) ]; then \
	    echo "Flaky: these needed a second run to pass:"; sed 's/^/    /' $(FLAKY_LIST); \
	else echo "Flaky: none (no test needed a second run)"; fi; \
	exit $$status

# The 32-bit release build started, its tray menu opened and Exit chosen,
# under a 32-bit Wine (Debian 13's wine32:i386; Debian 12 has none, so this
# is not part of 'make test'). See scripts/smoke-i686.sh.
smoke-i686: build-i686
	@scripts/install-deps.sh wine32
	scripts/smoke-i686.sh $(BUILD32)

# The long mutation campaign over every loader (tests/fuzz): FUZZ_INPUTS
# inputs in all, at low priority; prints what each loader made of them. It
# runs in a Wine environment of its own ($(BUILD)/fuzz-env, no PostgreSQL),
# so that a 'make test' meanwhile neither disturbs it nor is disturbed.
FUZZ_INPUTS ?= 1000000
fuzz: build
	mkdir -p $(BUILD)/fuzz-env
	MORVANE_POSTGRES=0 nice -n 19 scripts/with-wine.sh $(BUILD)/fuzz-env cmake/wine-run.sh \
	    $(BUILD64)/bin/fuzz_loaders.exe --inputs $(FUZZ_INPUTS)

# The control panel in a demo installation folder.
run: build
	scripts/run-demo.sh $(BUILD64)

# Pictures of the windows for the README (docs/screenshots/), taken from the
# real program in the demo installation on a private display.
screenshots: build
	scripts/screenshots.sh $(BUILD64)

clean:
	rm -rf $(BUILD)

# Benchmarks (tests/bench/*), each printing its figures and ratios.
bench: build
	cmake --build $(BUILD64) -j $(JOBS) --target benchmarks
	scripts/with-wine.sh $(BUILD64) scripts/run-benchmarks.sh $(abspath $(BUILD64))
