# The links of the documents, as they are on the pages that Doxygen makes of them.
# A link whose text goes over lines is put on one.
:join
/\[[^]]*$/ { $! { N; bjoin
} }
s#(\[[^]]*)\n *([^]]*\]\()#\1 \2#g
s#\]\((\.\./)*examples/([a-z]+/)?([a-z_]+)\.cpp\)#](\3_8cpp-example.html)#g
s#\]\((\.\./)*(prm|host/bsc|host/product)/([A-Za-z]+)\.h\)#](\3_8h_source.html)#g
s#\]\(docs/decisions/\)#](pages.html)#g
s#(\]\([^)]*\.md)\#[a-z-]+\)#\1)#g
s#\[`([^]`]*)`(\]\([^)]*\.md\))#[\1\2#g
s#\[([^]]*)\]\(tool/[^)]*\)#\1#g
s%\[([^]]*)\]\(\#[^)]*\)%\1%g
# Titles are shown as they stand.
/^\#+ / s#`##g
