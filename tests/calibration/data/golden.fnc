# Reverse sign on all recharges.
# The TARNO GUI and TARNO Solver differ in respect to the convention of the sign on all recharges
# The Solver requires the opposite sign of that which is stored in the project database.
#
:file m.tpl
:key rch1_
    $x*-1.0
#
:key Rch2_
    $x*-1.0
#
