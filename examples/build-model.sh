#!/usr/bin/env bash
# Builds a small model from nothing with tarnocmd alone, solves it and prints the
# heads:
#
#   examples/build-model.sh [<program dir>] <scratch dir>
#
# <program dir> holds tarnocmd, tarno1 and contour (a build's bin folder); without
# it tarnocmd is taken from PATH. The project, valley.trn, and its solver files are
# made in <scratch dir>, which is created if missing; an earlier valley.trn there
# is replaced.
#
# The model: a sand and gravel valley aquifer (base 0 m, 30 m thick, 20 m/day)
# drained by a river with a silty bed, a field drain, a buried clay wall, a
# recharge area, a regional gradient, one pumping well, a monitoring well with its
# observed head and a particle traced back from near the well. Coordinates and
# lengths are metres, rates m3/day.
set -euo pipefail

if [ $# -eq 2 ]; then
  TARNOCMD="$(cd "$1" && pwd)/tarnocmd"
  SCRATCH="$2"
elif [ $# -eq 1 ]; then
  TARNOCMD="$(command -v tarnocmd || true)"
  SCRATCH="$1"
else
  echo "usage: $0 [<program dir>] <scratch dir>" >&2
  exit 2
fi
if [ -z "$TARNOCMD" ] || [ ! -x "$TARNOCMD" ]; then
  echo "build-model: tarnocmd not found (give the program directory)" >&2
  exit 2
fi
mkdir -p "$SCRATCH"
cd "$SCRATCH"
# The directory memory of these runs stays in the scratch folder.
export TARNO_CONFIG_DIR="${TARNO_CONFIG_DIR:-$PWD/config}"
P="$PWD/valley.trn"
rm -f "$P"
find . -maxdepth 1 -type f -iname 'valley.*' -delete

tarno() { "$TARNOCMD" "$@"; }

tarno new "$P" --yes --base-name valley --description "Valley aquifer from build-model.sh" >/dev/null

# The aquifer, the contours of heads over the area and ten years of tracing.
tarno model "$P" AQBase=0 AQThickness=30 AQHydCond=20 AQPorosity=0.25 \
  CONTOURMinimum=10 CONTOURMaximum=26 CONTOURInterval=0.5 TRACEMaxTime=3650 TRACEStep=5 \
  SOLVERIterations=3 >/dev/null

# The river along the west side: head-specified, falling from 20 m to 18 m, its bed
# of 1 day resistance over 20 m of width.
tarno add "$P" linesink 0 3000 200 1500 300 0 \
  --set Label=WestRiver HeadSpecified=1 StartingHead=20 EndingHead=18 \
        Resistance=1 Width=20 Depth=2
# A field drain in the east, which takes water only while the heads stand above it.
tarno add "$P" linesink 2600 2600 2800 1200 \
  --set Label=EastDrain Drain=1 HeadSpecified=1 StartingHead=21 EndingHead=20.5 \
        Resistance=2 Width=1 Depth=0.5
# A buried clay wall south of the well: an open barrier of no conductivity.
tarno add "$P" barrier 900 700 1700 900 \
  --set Label=ClayWall HydCond=0 Thickness=1 Porosity=0.2 BottomElevation=0
# The upland in the north-east: recharge of 0.5 mm/day on top of the aquifer's.
tarno add "$P" inhomogeneity 1500 2200 2400 2200 2400 2900 1500 2900 \
  --set Label=Upland ChangeR=1 Recharge=0.0005
# The regional gradient: 20.5 m at the reference point, falling towards the river.
tarno add "$P" uniflow 1500 1500 --set Head=20.5 Gradient=0.001 Orientation=180
# The town's well, pumping 800 m3/day.
tarno add "$P" well 1300 1400 --set Label=TownWell Head=800 Radius=0.3
# A monitoring well with its observed head.
tarno add "$P" testpoint 1000 1800 --set Label=MW1 ObsHead=19.4
# A particle traced backward from near the well.
tarno add "$P" particle 1320 1420 --set Forward=0

echo "Elements:"
tarno list "$P"

tarno solve "$P" >/dev/null

# The heads: the solved head at each well and test point, from the result tables.
# Prints "<label> <column> <value>" for the named columns of each row.
heads() {
  local table="$1"
  shift
  tarno results "$P" "$table" | awk -F, -v want="$*" '
    NR == 1 { for (i = 1; i <= NF; i++) col[$i] = i; n = split(want, w, " "); next }
    { line = $col["Label"]; for (k = 1; k <= n; k++) line = line " " w[k] "=" $col[w[k]]; print line }'
}
echo "Heads at the wells:"
heads WLResults Head
echo "Heads at the test points:"
heads TPResults ObsHead ModelHead Difference
