# Shortcuts for the two commands of the README.
.PHONY: run test bench clean
run:
	bash scripts/main.sh
test:
	bash scripts/test.sh
bench:
	cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release && cmake --build build && ./build/bench/hands_bench
clean:
	rm -rf build build-sanitize build-tsan build-fuzz build-web out
