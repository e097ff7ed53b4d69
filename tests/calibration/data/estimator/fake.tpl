ptf !
* a, b and the fixed c (given as 2 c + 1 = 7)
 a !a           ! b ! b           ! c !c   !
