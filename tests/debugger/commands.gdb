set pagination off
set width 0
set print pretty off
set confirm off
break stop_here
run
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
set print pretty on
print m
