#!/usr/bin/env bash
# Makes the site in build/docs/html: runs the programs whose output and pictures it shows, reads the headers, and checks every page
# in a browser. A warning is an error, and so is a broken link or an obstacle for readers with a keyboard or a screen reader.
set -euo pipefail
cd "$(dirname "$0")/.."
out=build/docs
rm -rf $out/html $out/xml $out/tour
mkdir -p $out/tour

echo "programs"
cmake --preset demo >/dev/null
cmake --build --preset demo --target tour demo tessarn-selfcheck >$out/programs.log || { cat $out/programs.log; exit 1; }
for source in examples/tour/*.cpp; do
  name=$(basename "$source" .cpp)
  build/demo-programs/examples/tour_"$name" $out/tour/"$name".json >$out/tour/"$name".txt
done

echo "formulas and charts, from the npm registry"
command -v npm >/dev/null || tools/install.sh npm  # some packages of node bring it
[ site/node_modules/.package-lock.json -nt site/package-lock.json ] || (cd site && npm ci --no-audit --no-fund --silent)

echo "pages"
(cat docs/Doxyfile; echo "OUTPUT_DIRECTORY = $out") | doxygen -
/usr/bin/python3 site/pages.py $out/xml $out/tour build/demo $out/source
mkdir -p $out/source/_extra/_static/katex
cp -r site/node_modules/katex/dist/katex.min.css site/node_modules/katex/dist/fonts $out/source/_extra/_static/katex/
playground/build.sh $out/source/_extra/_static/playground
/usr/bin/python3 -m sphinx -q -W --keep-going -b html -d $out/doctrees -c site $out/source $out/html

echo "checks"
/usr/bin/python3 site/tests/links.py $out/html
node playground/tests/parse_test.js
node playground/tests/page_test.js $out/html "$(build/demo-programs/tessarn-selfcheck --line)"
node site/tests/browser.js $out/html
echo "$out/html/index.html"
