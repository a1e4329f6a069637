# The links of the documents, as they are on the pages that Doxygen makes of them.
s#\]\((\.\./)*examples/([a-z_]+\.cpp)\)#](@ref \2)#g
s#\]\((\.\./)*(prm|host/bsc|host/product)/([A-Za-z]+)\.h\)#](\3_8h_source.html)#g
s#\]\(docs/decisions/\)#](pages.html)#g
s#(\]\([^)]*\.md)\#[a-z-]+\)#\1)#g
s#\[([^]]*)\]\(tool/[^)]*\)#\1#g
