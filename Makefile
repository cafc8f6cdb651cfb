# Each command installs what it needs (as root or with sudo), builds, and does its job.
.PHONY: demo test bench windows docs fuzz package
demo: ; @tools/install.sh build demo && cmake --preset demo && cmake --build --preset demo --target demo
test: ; @tools/install.sh build demo test windows && tools/test.sh
bench: ; @tools/install.sh build bench && cmake --preset bench && cmake --build --preset bench --target bench
windows: ; @tools/install.sh build windows && windows/build.sh
docs: ; @tools/install.sh build docs && tools/docs.sh
fuzz: ; @tools/install.sh build fuzz && tools/fuzz.sh
package: ; @tools/install.sh build windows && windows/package.sh
