set pagination off
set width 0
set print pretty off
set confirm off
break stop_here
run
print by_reference
print *by_pointer
up
print z
print v
print w
print p
print m
print none
print s
print c
print b
print no_terms
print h
print list
print line
print upward
echo rows:\n
set print pretty on
output m
echo \n
