#!/usr/bin/env bash
# shaders_test.sh FOLDER: every composed shader is valid GLSL 1.20.
set -euo pipefail

if ! command -v glslangValidator >/dev/null; then
    echo "glslangValidator is not installed: no shader was checked"
    exit 77
fi
cd "$1"
shaders=(*.vert *.frag)
[ -e "${shaders[0]}" ] || { echo "no shaders in $1"; exit 1; }
status=0
for shader in "${shaders[@]}"; do
    head -n 1 "$shader" | grep -qx '#version 120' || { echo "$shader: not version 120"; status=1; }
    glslangValidator "$shader" || status=1
done
exit $status
