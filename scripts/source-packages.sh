# Functions for scripts that build from Debian's source packages: messages, and apt with source archives.

die() { printf '%s: %s\n' "$(basename "$0" .sh)" "$*" >&2; exit 1; }
say() { printf '%s: %s\n' "$(basename "$0" .sh)" "$*" >&2; }

# quietly COMMAND...: prints its output only if it fails.
quietly() {
    local output
    output=$("$@" 2>&1) || { printf '%s\n' "$output" >&2; return 1; }
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
