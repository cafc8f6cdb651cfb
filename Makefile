# Each command installs what it needs (as root or with sudo), builds, and does its job.
.PHONY: help demo test check bench windows docs fuzz package portable certify python
help: ; @sed -n 's/^\([a-z]*\): ## /make \1	/p' Makefile
demo: ## run the examples on reference and simulated data; reports and pictures go to build/demo/
	@tools/install.sh build demo && cmake --preset demo && cmake --build --preset demo --target demo
test: ## every test: each instruction set, valgrind, sanitizers, the Windows modules under Wine
	@tools/install.sh build demo test python windows && tools/test.sh
check: ## the short one: links, arrows of the includes, lint of changed files, the unit tests of one build
	@tools/install.sh build demo test check && tools/check.sh
bench: ## time the library beside its peers
	@tools/install.sh build bench && cmake --preset bench && cmake --build --preset bench --target bench
windows: ## the Windows modules for callers of Microsoft's C++ ABI and for MinGW-w64
	@tools/install.sh build windows && windows/build.sh
docs: ## the site with tour, reference and playground, into build/docs/html/; npm packages come from the registry
	@tools/install.sh build demo docs && tools/docs.sh
fuzz: ## the fuzz targets, 60 seconds in all (FUZZ_SECONDS=600 for more)
	@tools/install.sh build fuzz && tools/fuzz.sh
portable: ## the library and its tests on seven other processors, emulated
	@tools/install.sh build portable && portable/test.sh
certify: ## repeat the operations by every compiler, instruction set, module and processor; the table of docs/reproducibility.md
	@tools/install.sh build test windows portable && tools/certify.sh
python: ## the wheel for Python, and its tests on the installed package
	@tools/install.sh build python && python/wheel.sh
package: ## archives for Windows and of the sources, Debian packages used in a bare system, vcpkg, Conan and NuGet
	@tools/install.sh build demo docs windows package && windows/package.sh && packaging/source.sh && packaging/check.sh && packaging/debian/build.sh
