#!/bin/sh
# debian_changelog.sh PACKAGE MAINTAINER <CHANGELOG.md: writes the change log in Debian's format.
#
# In CHANGELOG.md each release begins with "## VERSION, YEAR-MONTH-DAY"; each of its items begins
# with "- " and may continue over several lines.
set -eu

awk -v package="$1" -v maintainer="$2" '
    # Prints the item that has been read, in lines of at most 76 characters.
    function end_item(    i, count, word, line) {
        count = split(item, word, " ")
        line = "  *"
        for (i = 1; i <= count; ++i) {
            if (length(line) + 1 + length(word[i]) > 76) {
                print line
                line = "   "
            }
            line = line " " word[i]
        }
        if (count > 0) print line
        item = ""
    }
    function end_release(    command, date) {
        end_item()
        if (day == "") return
        command = "LC_ALL=C date -u -R -d " day
        if ((command | getline date) <= 0) exit 1
        close(command)
        printf "\n -- %s  %s\n", maintainer, date
    }
    /^## / {
        again = day != ""
        end_release()
        day = $3
        printf "%s%s (%s) unstable; urgency=medium\n\n", again ? "\n" : "", package, \
            substr($2, 1, length($2) - 1)
        next
    }
    day == "" { next }
    /^- / { end_item(); item = substr($0, 3); next }
    { item = item " " $0 }
    END { end_release() }
'
