#!/usr/bin/env bash
# Builds the wheel, installs it into a virtual environment that sees the system's NumPy, and runs the tests on what was
# installed. TESSARN_PYTHON names another interpreter than Debian's.
set -euo pipefail
cd "$(dirname "$0")/.."
python=${TESSARN_PYTHON:-/usr/bin/python3}
wheels=$PWD/build/wheels
rm -rf "$wheels" build/python-environment
# No index is asked: what the wheel needs is installed.
"$python" -m pip wheel --quiet --no-index --no-build-isolation --no-deps --wheel-dir "$wheels" python/
cmake --build build/python --target tessarn-selfcheck
"$python" -m venv --system-site-packages build/python-environment
build/python-environment/bin/python -m pip install --quiet --no-index --no-deps "$wheels"/tessarn-*.whl
top=$PWD
cd build/python-environment  # so that the package of the sources is not found
TESSARN_SELFCHECK=$top/build/python/tessarn-selfcheck PYTHONDONTWRITEBYTECODE=1 \
  bin/python -m pytest -q -p no:cacheprovider "$top/python/tests"
ls "$wheels"/*.whl
