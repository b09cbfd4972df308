# What the scripts share; sourced, never run.

set -euo pipefail
root=$( cd "$( dirname "${BASH_SOURCE[0]}" )/.." && pwd )
scripts=$root/scripts
cd "$root"

jobs=$( nproc )
now() { date +%s; }
export IGMPHOST_STARTED=${IGMPHOST_STARTED:-$( now )} # shared with the scripts that one calls

# step TEXT: says what comes next, with the seconds since the script began.
step() { printf '==> [%3d s] %s\n' $(( $( now ) - IGMPHOST_STARTED )) "$*"; }

# die TEXT: ends the script with a message.
die() {
    printf '%s: %s\n' "$( basename "$0" )" "$*" >&2
    exit 1
}

# help: prints the comment at the top of the calling script, the first line of the file apart.
help() { sed -n '2,/^[^#]/{ /^#/!q; s/^# \{0,1\}//p }' "$0"; }

# helpIfAsked ARGS: for scripts that know no option but --help.
helpIfAsked() {
    case "${1:-}" in
    -h | --help)
        help
        exit 0
        ;;
    esac
}

# cppFiles [FOLDER...]: every C++ file of the project, or of the folders.
cppFiles() {
    local folders=() folder
    for folder in "${@:-src tests bench examples}"; do
        for folder in $folder; do
            [ ! -d "$folder" ] || folders+=( "$folder" )
        done
    done
    [ ${#folders[@]} -eq 0 ] || find "${folders[@]}" -type f \( -name '*.h' -o -name '*.cpp' \) | sort
}
