# What Doxygen reads in place of a header; a line stays a line, so that its warnings name the right one.

# The comment that stands first between ///@{ and ///@} holds for each declaration there. Doxygen's own groups would
# move their members to the end of the page.
/^ *\/\/\/@{$/ { shared = ""; grouped = 1; print ""; next }
/^ *\/\/\/@}$/ { grouped = 0; print ""; next }
grouped && /^ *\/\/\// { text = $0; sub(/^ *\/\/\/ ?/, "", text); shared = shared text " "; print ""; next }
grouped && /;/ { print "/** " shared "*/ " $0; next }

# Instances of templates that the library holds are no news on a page.
/^extern template / { print ""; next }

# Said once here, not in each header.
/static const VELM_UUID& IID\(/ { $0 = "/** The interface's identifier, for `queryInterface`. */ " $0 }
/static const VELM_UUID& DID\(/ { $0 = "/** The identifier of this kind of driver, which `getDID` gives. */ " $0 }
/static const VELM_UUID& CID\(/ { $0 = "/** The identifier of the class. */ " $0 }
{ print }
