#!/usr/bin/env bash
# SPDX-License-Identifier: LicenseRef-HXAux
# Builds the API reference from the public headers into build/docs/html; a warning is an error. Checks the links of the
# guides.
set -euo pipefail
cd "$(dirname "$0")/.."
mkdir -p build/docs
doxygen docs/Doxyfile
scripts/check-links
echo "build/docs/html/index.html"
