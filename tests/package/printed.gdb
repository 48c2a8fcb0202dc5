set print pretty off
set width 0
break look
run
up
print err
print list
print none
print unset
print ring
print stack
print tree
print trie
print *trie
print strings
print bits
print *bits
print window
print *button
print image
print /r list->tag
