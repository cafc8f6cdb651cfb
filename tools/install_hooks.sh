#!/usr/bin/env bash
# Makes git run the short check before a commit.
set -euo pipefail
cd "$(dirname "$0")/.."
hook=$(git rev-parse --git-path hooks/pre-commit)
printf '#!/bin/sh\nexec tools/check.sh\n' >"$hook"
chmod +x "$hook"
echo "$hook"
