#!/bin/bash
# Checks that only start/startup.cpp has dynamic initialisation at namespace scope, so that the order
# of start-up and tear-down can be read there from top to bottom. Release builds only: the sanitizers
# add more initialisers.
# Usage: check_initialisers.sh OBJECT...
set -euo pipefail
[[ $# -gt 0 ]] || { echo "usage: check_initialisers.sh OBJECT..." >&2; exit 2; }
status=0 found=
for object; do
    # Not nm: of an object that also has code for optimisation at link time, nm shows only the symbols of that code.
    # Not grep -q, which stops at the first match: then readelf fails, and with it the whole pipe.
    if readelf --wide --syms "$object" | grep '_GLOBAL__sub_I_' >/dev/null; then
        case $object in
        */start/startup.cpp.o) found=yes ;;
        *)
            echo "$object has a dynamic initialiser; make it constinit, or move it to start/startup.cpp" >&2
            readelf --wide --syms "$object" | grep '_GLOBAL__sub_I_' >&2
            status=1
            ;;
        esac
    fi
done
[[ -n $found ]] || { echo "start/startup.cpp has no dynamic initialiser: is this check still looking?" >&2; status=1; }
exit $status
