#!/bin/sh
# debian_changelog.sh PACKAGE MAINTAINER <CHANGELOG.md: the same in Debian's form.
#
# A release begins with "## VERSION, YEAR-MONTH-DAY"; each of its items begins with "- " and may
# go on over several lines.
set -eu

awk -v package="$1" -v maintainer="$2" '
    # Words of the item so far, in lines of at most 76 characters.
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
