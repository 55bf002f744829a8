#!/usr/bin/env bash
# Every subsystem includes only from itself and from the floors below it. Exits 1 with the lines that do not.
set -euo pipefail
cd "$(dirname "$0")/.."

declare -A below=(
    [text]=""
    [errors]=""
    [arrays]=""
    [variant]="text errors arrays"
    [tree]="text errors arrays variant"
    [json]="text errors arrays variant tree"
    [units]="text errors arrays variant tree"
    [variables]="text errors arrays variant tree units"
    [entities]="text errors arrays variant tree json units variables"
    [files]="text"
)

failed=0
for folder in zelm/*/; do
    subsystem=$(basename "$folder")
    if [ -z "${below[$subsystem]+known}" ]; then
        echo "check-layers: no floor is known for zelm/$subsystem" >&2
        failed=1
        continue
    fi
    while IFS=: read -r file line included; do
        if [[ " $subsystem ${below[$subsystem]} " != *" $included "* ]]; then
            echo "$file:$line: zelm/$subsystem must not include from zelm/$included" >&2
            failed=1
        fi
    done < <(grep -rnoE '^#include [<"]zelm/[a-z]+/' "$folder" | sed -E 's|#include [<"]zelm/([a-z]+)/|\1|')
    if bad=$(grep -rnE '^#include "' "$folder"); then
        echo "$bad: write #include <zelm/...>" >&2
        failed=1
    fi
done
exit $failed
