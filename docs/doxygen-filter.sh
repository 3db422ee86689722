#!/bin/sh
# Turns whole-line comments into those that Doxygen reads; the first block describes the file.
awk 'NR == 1 && /^\/\/ / { print "/// \\file"; print "///" }
     { if ($0 ~ /^[ \t]*\/\/( |$)/) sub(/\/\//, "///"); print }' "$1"
