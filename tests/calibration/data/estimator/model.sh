#!/bin/sh
# A stand-in for the solver: y = a x^2 / (1 + b x) for x = 1..6, from fake.in.
# With FAIL_MODEL set in the environment the run fails as the solver does on a
# fatal error: TARNO.OPS and a status other than 0.
if [ -n "$FAIL_MODEL" ]; then echo "Fatal: stopped by the test" > TARNO.OPS; exit 3; fi
awk '$1 == "a" { a = $2; b = $4; c = $6 }
  END { if (c + 0 != 7) { print "c is " c > "/dev/stderr"; exit 1 }
        print "results"
        for (x = 1; x <= 6; x++) printf "y%-3d%24.15e\n", x, a * x * x / (1 + b * x) }' fake.in > fake.out
