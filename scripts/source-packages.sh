# Functions for scripts that build from Debian's source packages: messages, and apt with source archives.

die() { printf '%s: %s\n' "$(basename "$0" .sh)" "$*" >&2; exit 1; }
say() { printf '%s: %s\n' "$(basename "$0" .sh)" "$*" >&2; }

# quietly COMMAND...: prints its output only if it fails.
quietly() {
    local output
    output=$("$@" 2>&1) || { printf '%s\n' "$output" >&2; return 1; }
}

# build_once NAME FILE...: ends the script if deps/NAME was built already by the present versions of the files, of which it is
# one. Otherwise empties that folder and makes one to work in: `prefix` and `work`. Who starts the script meanwhile waits
# for it. `built` ends the work.
build_once() {
    prefix=$PWD/deps/$1
    work=$PWD/deps/work-$1
    stamp="$prefix/made-by-$(cat "${@:2}" | sha256sum | cut -c1-16)"
    if [ -e "$stamp" ]; then exit 0; fi
    mkdir -p deps
    exec 8>"deps/lock-$1"
    flock 8
    if [ -e "$stamp" ]; then exit 0; fi
    rm -rf "$work" "$prefix"
    mkdir -p "$work" "$prefix"
}

built() {
    cd "$prefix"
    rm -rf "$work"
    touch "$stamp"
}

# source_archives FOLDER [PATTERN]: makes `fetch_sources` use the archives and suites of the machine's packages, or those
# whose line matches the pattern. The configuration is in FOLDER; that of the machine isn't changed. apt verifies Debian's
# signatures.
source_archives() {
    local folder=$1 pattern=${2:-.}
    mkdir -p "$folder/lists" "$folder/cache"
    apt-get indextargets --format 'deb-src $(REPO_URI) $(CODENAME) $(COMPONENT)' 'Created-By: Packages' 'Origin: Debian' |
        grep -- "$pattern" | sort -u >"$folder/sources.list" || die "no Debian archive is configured on this machine"
    apt_options=(-o "Dir::Etc::sourcelist=$folder/sources.list" -o Dir::Etc::sourceparts=- -o "Dir::State::Lists=$folder/lists"
        -o "Dir::Cache=$folder/cache" -o APT::Sandbox::User=root)
    quietly apt-get "${apt_options[@]}" update || die "reading Debian's list of sources failed"
}

# fetch_sources [--download-only] PACKAGE...: into the working directory, unpacked unless --download-only is given.
fetch_sources() {
    quietly apt-get "${apt_options[@]}" source "$@" || die "fetching the sources of $* failed"
}
