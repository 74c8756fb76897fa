#!/usr/bin/env bash
# fixture.sh begin|end BUILD_FOLDER [EMULATOR]: hosts under test start a monitor, of their own, not the user's. Before the
# tests this takes away the reports of tests that were killed, after them it ends the monitor.
set -euo pipefail

step=$1
folder=$2
shift 2
if [ $# -gt 0 ]; then
    case $step in
        begin) "$@" reg delete 'HKCU\Software\Vantrel\Common\Monitoring' /f >/dev/null 2>&1 || true ;;
        end) "$@" taskkill /f /im GPUMonitor.exe >/dev/null 2>&1 || true ;;
    esac
    exit 0
fi

mkdir -p -m 700 "$folder/runtime"
if [ "$step" = begin ]; then
    rm -rf "$folder/config/vantrel/Common/Monitoring"
    exit 0
fi
for process in /proc/[0-9]*; do
    name=
    { read -r name <"$process/comm"; } 2>/dev/null || true
    if [ "$name" = GPUMonitor ] &&
        grep -qzx "XDG_RUNTIME_DIR=$folder/runtime" "$process/environ" 2>/dev/null; then
        kill "${process#/proc/}"
    fi
done
