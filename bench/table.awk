# Google Benchmark's CSV into one Markdown table: operation, our time, and beside it each peer's time with how
# many times ours it is. Names are operation/who/size.

BEGIN {
    FS = ","
    split("build flatten build_flatten read_by_id walk rebuild tree_insert tree_search tree_delete " \
          "slist_queue dlist_queue dlist_owned slist_walk id_lowest_last id_above_top id_iterate " \
          "mutex_uncontended mutex_contended mutex_timed crc32 rfc1321 base64_encode base64_decode " \
          "print_int print_fixed print_general print_exact print_tiny print_huge " \
          "utf8_to_ucs2_ascii utf8_to_ucs2_latin utf8_to_ucs2_cjk " \
          "ucs2_to_utf8_ascii ucs2_to_utf8_latin ucs2_to_utf8_cjk " \
          "ini_read_first ini_read_middle ini_read_last ini_list_sections ini_list_keys ini_set_first ini_set_last " \
          "from_int32 from_uint64 from_hex from_double from_bytes from_ipv4 " \
          "to_int32 to_uint64 to_double to_bytes to_commalist to_dump to_hex to_ipv4 " \
          "xml_document xml_escape_plain xml_escape_specials " \
          "property_read_last property_write_last stringid_lookup filelock_reader filelock_writer " \
          "named_mutex sem_pair local_sem_pair sem_ping_pong event_ping_pong sem_create_known sem_open_known " \
          "rwlock_read rwlock_write named_rwlock_read named_rwlock_write critical_section library_symbol " \
          "log_text log_xml log_both log_system rotated_line rotated_prefix " \
          "log_text_contended log_xml_contended log_both_contended log_system_contended " \
          "rotated_line_contended rotated_prefix_contended attach_detach", order, " ")
}

$9 == "true" {
    print "failed: " $0 > "/dev/stderr"
    failed = 1
}

/_median"/ {
    name = $1
    gsub(/"|_median/, "", name)
    # Processor time. A row of the first kind measures it itself, one of the second kind is about waiting.
    time = sub(/\/manual_time/, "", name) || sub(/\/real_time/, "", name) ? $3 : $4
    sub(/\/threads:/, "/", name)
    operation = name
    sub(/\/.*/, "", operation)
    size = name
    sub(/.*\//, "", size)
    who = substr(name, length(operation) + 2, length(name) - length(operation) - length(size) - 2)
    times[operation, size, who] = time
    if (!((operation, size) in seen)) {
        seen[operation, size] = 1
        sizes[operation] = sizes[operation] " " size
    }
    if (!(who in known)) {
        known[who] = 1
        everyone[++people] = who
    }
}

function Time(ns)
{
    if (ns < 1000)
        return sprintf("%.1f ns", ns)
    if (ns < 1000000)
        return sprintf("%.2f µs", ns / 1000)
    return sprintf("%.2f ms", ns / 1000000)
}

function PrintRow(operation, size,    label, ours, line, i, who, peer)
{
    ours = times[operation, size, "ours"]
    label = operation
    gsub("_", " ", label)
    if (operation != "attach_detach")
        label = label ", " size
    line = ""
    for (i = 1; i <= people; ++i) {
        who = everyone[i]
        if (who == "ours" || !((operation, size, who) in times))
            continue
        peer = times[operation, size, who]
        line = line (line == "" ? "" : "; ") who " " Time(peer) sprintf(" (%.2f)", peer / ours)
    }
    print "| " label " | " Time(ours) " | " line " |"
}

END {
    if (failed)
        exit 1
    # Rows come in random order.
    for (i = 2; i <= people; ++i)
        for (j = i; j > 1 && everyone[j - 1] > everyone[j]; --j) {
            who = everyone[j]
            everyone[j] = everyone[j - 1]
            everyone[j - 1] = who
        }
    for (i = 1; i in order; ++i)
        ordered[order[i]] = 1
    for (operation in sizes)
        if (!(operation in ordered)) {
            print "no place in the order: " operation > "/dev/stderr"
            exit 1
        }
    print "| operation | ours | peers (times ours) |"
    print "|---|---|---|"
    for (i = 1; i in order; ++i) {
        count = split(sizes[order[i]], listed, " ")
        for (a = 1; a <= count; ++a)
            for (b = a + 1; b <= count; ++b)
                if (listed[b] + 0 < listed[a] + 0) {
                    size = listed[a]
                    listed[a] = listed[b]
                    listed[b] = size
                }
        for (a = 1; a <= count; ++a)
            PrintRow(order[i], listed[a])
    }
}
