#!/usr/bin/env bash
# Installs missing packages, builds with sanitizers and warnings as errors, runs every test, checks
# the formatting, runs clang-tidy on the sources, checks the includes, builds the release and its
# package, checks the package, and counts the test lines. The last line of the output states how
# many tests passed and failed; the exit status is 0 only if nothing failed.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/setup.sh

code_folders=(app link functions buffer files shell platform simbox)
results=$PWD/build/ci/results.xml
status=0
shopt -s extglob # for check_includes

build() {
    cmake --preset ci >/dev/null # errors are still printed
    cmake --build --preset ci -- --quiet
}

# Runs two tests at a time, because most tests spend their time waiting.
run_tests() {
    rm -f "$results"
    ctest --test-dir build/ci --parallel 2 --output-on-failure --no-tests=error \
        --output-junit "$results" </dev/null || status=1
}

# Prints the names of the C++ sources and headers in the given folders.
sources() { find "$@" -name '*.cpp' -o -name '*.h'; }

check_format() {
    echo
    local files
    mapfile -t files < <(sources "${code_folders[@]}" tests bench fuzz)
    if clang-format-19 --dry-run -Werror "${files[@]}"; then
        echo "formatting: ${#files[@]} files match .clang-format"
    else
        status=1
        echo "formatting: FAILED; clang-format-19 -i corrects it"
    fi
}

# All findings of clang-tidy are errors (see .clang-tidy).
check_lint() {
    echo
    local files
    mapfile -t files < <(sources "${code_folders[@]}" | grep '\.cpp$')
    if printf '%s\n' "${files[@]}" | xargs -P 2 -n 4 clang-tidy-19 -p build/ci --quiet 2>/dev/null; then
        echo "clang-tidy: nothing found in ${#files[@]} sources"
    else
        status=1
        echo "clang-tidy: FAILED"
    fi
}

# Prints each #include of a header whose folder does not match the regular expression FOLDERS.
includes_of() { # SOURCE... FOLDERS
    ! grep -HnE '^#include "' "${@:1:$#-1}" | grep -vE "\"(${!#})/[^/]+\"" || wrong_includes=1
}

# Which folder may include which. The sources of the windows (frm*, and all of shell) may also
# include platform/qt; app/main.cpp may include everything.
check_includes() {
    echo
    local wrong_includes=0
    includes_of platform/*.* 'platform'
    includes_of platform/qt/*.* 'platform(/qt)?'
    includes_of app/!(main.cpp) 'app|platform'
    includes_of link/*.* 'app|link|platform'
    includes_of buffer/!(frm*) 'app|buffer|platform'
    includes_of buffer/frm*.* 'app|buffer|platform(/qt)?'
    includes_of files/!(frm*) 'app|buffer|files|platform'
    includes_of files/frm*.* 'app|buffer|files|platform(/qt)?'
    includes_of functions/!(frm*) 'app|link|buffer|functions|platform'
    includes_of functions/frm*.* 'app|link|buffer|functions|platform(/qt)?'
    includes_of shell/*.* shell/help/*.* 'app|link|buffer|files|functions|platform(/qt)?|shell(/help)?'
    includes_of simbox/*.* 'simbox'
    if ((wrong_includes == 0)); then
        echo "includes: as the table of folders allows"
    else
        status=1
        echo "includes: FAILED"
    fi
}

check_package() {
    echo
    if scripts/package.sh; then
        echo "package: hardened, and lintian finds nothing"
    else
        status=1
        echo "package: FAILED"
    fi
}

# Counts the lines that are neither blank nor only a comment, in the files listed on standard input;
# $1 is the text that starts a comment.
count_lines() { xargs -d '\n' cat | grep -cvaE "^[[:space:]]*($1.*)?\$"; }

# Test lines are those of all files in tests and fuzz, except images and corpora.
show_test_share() {
    local code tests
    code=$(sources "${code_folders[@]}" | count_lines //)
    tests=$(sources tests fuzz | count_lines //)
    tests=$((tests + $(find tests fuzz -type f ! -path '*/corpus/*' |
        grep -vE '\.(cpp|h|bin|hex)$' | count_lines '#')))
    echo "test lines: $tests against $code lines of code, $((100 * tests / code)) %"
}

# Prints the number in attribute $1 of the root element of the results, or 0 if the attribute is
# missing.
counted() { printf '%d\n' "$(sed -n "s/.*[[:space:]]$1=\"\([0-9]*\)\".*/\1/p;/<testcase/q" "$results" | head -n 1)"; }

# Prints the numbers of tests, the last line of the output. A skipped or disabled test makes the
# whole run fail.
count() {
    local all failed skipped
    all=$(counted tests)
    failed=$(counted failures)
    skipped=$(($(counted skipped) + $(counted disabled)))
    echo
    if ((skipped > 0)); then
        status=1
        echo "$((all - failed - skipped)) passed, $failed failed, $skipped skipped"
    else
        echo "$((all - failed)) passed, $failed failed"
    fi
}

build
run_tests
check_format
check_lint
check_includes
check_package
show_test_share
count
((status == 0))
