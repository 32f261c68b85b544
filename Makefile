# Set-up, build, run and test on a Debian machine; see README.md.
BUILD := build
CMAKE_FLAGS ?= -DCMAKE_BUILD_TYPE=RelWithDebInfo

.PHONY: deps configure build run test bench clean

deps:
	@bash tools/instalar-dependencias.sh

$(BUILD)/build.ninja: CMakeLists.txt | deps
	cmake -S . -B $(BUILD) -G Ninja $(CMAKE_FLAGS)

configure: deps $(BUILD)/build.ninja

build: configure
	cmake --build $(BUILD) -j 2

run: build
	./$(BUILD)/orbmanager

test: build
	cd $(BUILD) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j 2

bench: build
	@for b in $(BUILD)/bench/bench_*; do [ -f "$$b" ] && [ -x "$$b" ] || continue; echo "== $$b"; $$b || exit 1; done

clean:
	rm -rf $(BUILD)
