# Puts a comment before each function of a family whose functions are described at the SCK210_ family.
#
# A prototype of another family that has no comment of its own gets the one of its SCK210_ sibling, and a note of its
# device type. Nothing else changes: an SCK210_ function without a comment stays without one, and doxygen reports it.

# Prototypes begin with the API mark; their name may stand on the next line.
/^SCRIBERA_API/ {
    prototype = $0
    while (prototype !~ /\(/ && (getline line) > 0)
        prototype = prototype "\n" line
    if (!commented && match(prototype, /(SCK420_|SCK421B_|SCKM730_|SCT580_)[A-Za-z0-9]+\(/)) {
        name = substr(prototype, RSTART, RLENGTH - 1)
        sub(/^(SCK420_|SCK421B_|SCKM730_|SCT580_)/, "SCK210_", name)
        device = substr(prototype, RSTART, index(substr(prototype, RSTART), "_")) "DEVICE"
        print "/**\n * @copybrief " name "\n *\n * @copydetails " name
        print " *\n * @note For SCK210_DEVICE read " device ".\n */"
    }
    print prototype
    commented = 0
    next
}

# A comment counts for the line right behind it. Headings between prototypes are plain comments.
{ print; commented = $0 ~ /\*\/$/ && (block || $0 ~ /\/\*\*/) }
/\/\*\*/ { block = 1 }
/\*\/$/ { block = 0 }
