# The tables of bench.sh, out of what note() has gathered. Sourced after common.sh.

median() {
    local values
    read -ra values <<<"${measured[$1]:-}"
    ((${#values[@]} > 0)) || fail "nothing measured under $1"
    printf '%s\n' "${values[@]}" | sort -g | sed -n "$(((${#values[@]} + 1) / 2))p"
}

# Each prints a row of the first table: WHAT, UNIT, the measured value, that of the reference or -,
# and the goal: a ratio to the reference, a distance from it, or a value by itself.
row_times() { row times "$@"; }
row_more() { row more "$@"; }
row_most() { row most "$1" "$2" "$3" - "$4"; }
row_only() { row only "$1" "$2" "$3" "$4" -; }
row() {
    awk -v kind="$1" -v what="$2" -v unit="$3" -v ours="$4" -v reference="$5" -v goal="$6" '
        function shown(value) {
            if (value == "-") return "-"
            return sprintf(value >= 1000 ? "%.0f" : value >= 100 ? "%.1f" : "%.3g", value) " " unit
        }
        BEGIN {
            ratio = reference == "-" ? "-" : sprintf("%.3f", ours / reference)
            if (kind == "times") { reached = ours / reference <= goal; text = goal " times" }
            if (kind == "more") { reached = ours - reference <= goal; text = goal " " unit " more" }
            if (kind == "most") { reached = ours <= goal; text = goal " " unit }
            if (kind == "only") { text = "-" }
            printf "| %s | %s | %s | %s | %s | %s |\n", what, shown(ours), shown(reference), ratio,
                text, kind == "only" ? "-" : reached ? "yes" : "**no**"
        }'
}

print_runs() {
    local name
    for name in Program Verify Read; do
        row_times "$name, 64 KiB; the reference is the wire" ms \
            "$(median "run/$name/65536")" "$(median "wire/$name/65536")" 1.01
        row_most "processor time during it, of one core" % "$(median "percent/$name/65536")" 2
    done
}

print_link() {
    local sent got shape what
    while read -r sent got; do
        shape=out${sent}in$got
        row_more "exchange without a pace, $sent bytes for $got; the reference is a bare loop" us \
            "$(median "exchange/$shape/ours_us")" "$(median "exchange/$shape/bare_us")" 12
        row_more "processor time of it" us "$(median "exchange/$shape/ours_processor_us")" \
            "$(median "exchange/$shape/bare_processor_us")" 12
    done <<<$'10 260\n261 1'
    for what in 100 200 500; do
        row_most "a pause of $what ms ends late by" us "$(median "waitTimer/$what/late_us")" 1000
    done
}

print_idle() {
    row_most "idle, main window and buffer view, of one core" % "$(median idle/main)" 0.1
    row_only "times it is woken in 10 s" "" "$(median wakes/main)" -
    row_most "idle, function window as well, of one core" % "$(median idle/function)" 0.1
    row_only "times it is woken in 10 s" "" "$(median wakes/function)" -
}

print_files() {
    local load text
    load=$(median loadIntelHex/65536)
    text=$(median buildIntelHexText/65536)
    row_most "Intel HEX, 64 KiB, read, parsed and placed" us "$load" 350
    row_most "its text built" us "$text" 200
    row_only "both; the reference is objcopy" us "$(awk "BEGIN { print $load + $text }")" \
        "$(median objcopy)"
    [[ -z ${measured[srec_cat]:-} ]] ||
        row_only "both; the reference is srec_cat" us "$(awk "BEGIN { print $load + $text }")" \
            "$(median srec_cat)"
}

print_view() {
    row_most "page text" us "$(median pageText/65536)" 1
    row_most "checksum, 64 KiB" us "$(median checkSum/65536)" 8
    row_most "digit typed, to the painted page" us "$(median keyInView/digit/65536)" 2000
    row_most "the same on a virtual screen" us "$(median screen/keyInView/digit/65536)" 2000
    row_most "scrolled by key, to the painted page" us "$(median keyInView/scroll/65536)" 2000
    row_most "the same on a virtual screen" us "$(median screen/keyInView/scroll/65536)" 2000
}

print_machine() {
    row_most "start to main window, fixed waits taken off" ms "$(median start)" 90
    row_most "memory (PSS), image loaded, buffer view open" MiB "$(median pss/65536)" 36
    row_only "resident, shared pages in full" MiB "$(median resident/65536)" -
}

# growth WHAT UNIT KEY [LESS]: KEY at each size, less LESS.
growth() {
    local size values=()
    for size in "${sizes[@]}"; do
        values+=("$(median "${3//SIZE/$size}")")
    done
    awk -v what="$1" -v unit="$2" -v less="${4:-0}" -v values="${values[*]}" 'BEGIN {
        split(values, at, " ")
        for (i in at) at[i] -= less
        printf "| %s |", what
        for (i = 1; i <= 3; ++i) printf(at[i] >= 1000 ? " %.0f %s |" : " %.3g %s |", at[i], unit)
        printf " x %.1f | x %.1f |\n", at[2] / at[1], at[3] / at[2]
    }'
}

print_growth() {
    local name
    for name in Program Verify Read; do
        growth "$name, its pauses taken off" ms "run/$name/SIZE" "${pauses_ms[$name]}"
        growth "processor time during it" ms "processor/$name/SIZE"
    done
    growth "Intel HEX read, parsed and placed" us "loadIntelHex/SIZE"
    growth "its text built" us "buildIntelHexText/SIZE"
    growth "page text" us "pageText/SIZE"
    growth "checksum" us "checkSum/SIZE"
    growth "digit typed, to the painted page" us "keyInView/digit/SIZE"
    growth "memory (PSS)" MiB "pss/SIZE"
}

print_tables() {
    local qt
    qt=$(pkg-config --modversion Qt6Core 2>/dev/null || qmake6 -query QT_VERSION)
    printf '\n%s, %s cores, Linux %s, Qt %s; %s.\n\n' \
        "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)" "$(nproc)" \
        "$(uname -r | cut -d- -f1)" "$qt" "$(date +%F)"
    printf '| What | Ours | Reference | Ratio | Goal, at most | Reached |\n'
    printf '|---|---:|---:|---:|---:|---|\n'
    print_runs
    print_link
    print_idle
    print_files
    print_view
    print_machine
    printf '\n| By the size of the device | 256 | 4096 | 65536 | 256 to 4096 | 4096 to 65536 |\n'
    printf '|---|---:|---:|---:|---:|---:|\n'
    print_growth
}
