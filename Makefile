# The front door. Every target first installs what it needs (scripts/setup); everything is built below build/.

.PHONY: help run test windows check fuzz bench docs package clean

help:
	@echo 'make run [FILE=song.mp3]  decode a file (or the samples), show it, play it where there is sound'
	@echo 'make test                 all tests, on the native build and on the Windows DLL under Wine'
	@echo 'make windows              the Windows DLL with its import library'
	@echo 'make check                format, layers, static analysis, sanitizer runs'
	@echo 'make fuzz [T=seconds]     all fuzzing targets, 60 seconds of processor time each unless told otherwise'
	@echo 'make bench                speed compared with other programs, into docs/performance.md'
	@echo 'make docs                 the reference of the public headers, into build/api/html'
	@echo 'make package              a Debian package and a Windows archive, tried in clean places, in build/packages'
	@echo 'make clean                delete build/'

# A build without tests does with fewer packages; one that make test set up keeps its tests.
run:
	@scripts/setup run
	@test -f build/release/build.ninja || cmake --preset release -DBUILD_TESTING=OFF
	@cmake --build --preset release --target trnmpafileread mpatool
	@scripts/play build/release/bin/mpatool "$$FILE"

test:
	@scripts/setup test
	@scripts/test-presets release windows

windows:
	@scripts/setup windows
	@test -f build/windows/build.ninja || cmake --preset windows -DBUILD_TESTING=OFF
	@cmake --build --preset windows --target trnmpafileread mpatool
	@echo 'Module, import library and tool:'
	@ls build/windows/bin/trnmpafileread.dll build/windows/lib/*trnmpafileread*.a build/windows/bin/mpatool.exe

check:
	@scripts/setup check
	@scripts/check

fuzz:
	@scripts/setup fuzz
	@scripts/fuzz --seconds "$${T:-60}"

bench:
	@scripts/setup bench
	@test -f build/release/build.ninja || cmake --preset release -DBUILD_TESTING=OFF
	@cmake --preset release -DTRN_BUILD_BENCHMARKS=ON
	@cmake --build --preset release --target bench

docs:
	@scripts/setup docs
	@scripts/check docs
	@echo build/api/html/index.html

package:
	@scripts/setup package
	@scripts/package

clean:
	rm -rf build
