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
print map
set print elements 3
print wide[0]
print wide[1]
set print elements 200
print strings
print bits
print *bits
print window
print *button
print image
print /r list->tag
