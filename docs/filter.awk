# Prepares a header for Doxygen. Keeps the number of lines, so that warnings name the right line.

# The first comment between ///@{ and ///@} applies to each declaration there. Doxygen's own groups
# would move their members to the end of the page.
/^ *\/\/\/@{$/ { shared = ""; grouped = 1; print ""; next }
/^ *\/\/\/@}$/ { grouped = 0; print ""; next }
grouped && /^ *\/\/\// { text = $0; sub(/^ *\/\/\/ ?/, "", text); shared = shared text " "; print ""; next }
grouped && NF { print (declared ? "" : "/** " shared "*/ ") $0; declared = !/;/; next }

# Doxygen does not see the bases that a class gets through TDriver, and so no inherited comments.
match($0, /public TDriver<[^>]*>/) {
    bases = substr($0, RSTART + 15, RLENGTH - 16)
    gsub(/, /, ", public ", bases)
    $0 = substr($0, 1, RSTART + 6) bases substr($0, RSTART + RLENGTH)
}

# The library's template instantiations are of no interest to readers.
/^extern template / { print ""; next }

# Documented once here instead of in each header.
/static const VELM_UUID& IID\(/ { $0 = "/** The interface's identifier, for `queryInterface`. */ " $0 }
/static const VELM_UUID& DID\(/ { $0 = "/** The identifier of this kind of driver, which `getDID` returns. */ " $0 }
/static const VELM_UUID& CID\(/ { $0 = "/** The identifier of the class. */ " $0 }
{ print }
