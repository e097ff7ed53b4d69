#!/usr/bin/env bash
# Builds a synthetic calibration problem with tarnocmd alone: a model with known
# parameters is solved, its heads at the test points become their observations, and
# the two tagged parameters are then put off by a factor of 3, ready for
#
#   tarnocmd estimate <scratch dir>/synth.trn
#
# to find them again (aquifer conductivity 20 m/day, tag "Kaq"; recharge of the
# upland 0.0005 m/day, tag "Rupl").
#
#   examples/calibration-model.sh [<program dir>] <scratch dir> [<test points>]
#
# <program dir> holds tarnocmd, tarno1 and contour (a build's bin folder); without it
# tarnocmd is taken from PATH. The project, synth.trn, and its solver files are made
# in <scratch dir>; an earlier synth.trn there is replaced. <test points> (default 8)
# are laid on a regular row across the model. Coordinates and lengths are metres.
set -euo pipefail

if [ $# -ge 2 ] && [ -d "$1" ] && [ -x "$1/tarnocmd" ]; then
  TARNOCMD="$(cd "$1" && pwd)/tarnocmd"
  SCRATCH="$2"
  NTP="${3:-8}"
elif [ $# -ge 1 ]; then
  TARNOCMD="$(command -v tarnocmd || true)"
  SCRATCH="$1"
  NTP="${2:-8}"
else
  echo "usage: $0 [<program dir>] <scratch dir> [<test points>]" >&2
  exit 2
fi
if [ -z "$TARNOCMD" ] || [ ! -x "$TARNOCMD" ]; then
  echo "calibration-model: tarnocmd not found (give the program directory)" >&2
  exit 2
fi
mkdir -p "$SCRATCH"
cd "$SCRATCH"
export TARNO_CONFIG_DIR="${TARNO_CONFIG_DIR:-$PWD/config}"
P="$PWD/synth.trn"
rm -f "$P"
find . -maxdepth 1 -type f -iname 'synth.*' -delete

tarno() { "$TARNOCMD" "$@"; }

tarno new "$P" --yes --base-name synth --description "Synthetic calibration model" >/dev/null
# The known model: conductivity 20 m/day, tagged for estimation. The contour levels
# cover the heads (19 to 22 m), so that the map of a solve shows them.
tarno model "$P" AQBase=0 AQThickness=30 AQHydCond=20 AQPorosity=0.25 \
  chkScenarioHydCond=1 ScenHydCond=Kaq SOLVERIterations=3 \
  CONTOURMinimum=18 CONTOURMaximum=23 CONTOURInterval=0.25 >/dev/null
# A river along the west side and one along the east side, fixing the heads.
tarno add "$P" linesink 0 0 0 1000 0 2000 \
  --set Label=WestRiver HeadSpecified=1 StartingHead=20 EndingHead=19 Resistance=0.1 Width=5 Depth=1 >/dev/null
tarno add "$P" linesink 3000 0 3000 2000 \
  --set Label=EastRiver HeadSpecified=1 StartingHead=22 EndingHead=21 Resistance=0.1 Width=5 Depth=1 >/dev/null
# The upland: recharge of 0.5 mm/day, tagged for estimation.
tarno add "$P" inhomogeneity 1000 500 2000 500 2000 1500 1000 1500 \
  --set Label=Upland ChangeR=1 Recharge=0.0005 chkScenarioRecharge=1 ScenRecharge=Rupl >/dev/null
# Three pumping wells.
tarno add "$P" well 700 1000 --set Label=W1 Head=300 Radius=0.2 >/dev/null
tarno add "$P" well 1500 300 --set Label=W2 Head=200 Radius=0.2 >/dev/null
tarno add "$P" well 2400 1700 --set Label=W3 Head=250 Radius=0.2 >/dev/null
# The test points on a row across the model, their observations set below.
for ((i = 1; i <= NTP; i++)); do
  x=$(awk -v i="$i" -v n="$NTP" 'BEGIN { printf "%.1f", 150 + 2700 * (i - 0.5) / n }')
  y=$(awk -v i="$i" 'BEGIN { printf "%.1f", 400 + 1200 * ((i * 7) % 10) / 10 }')
  tarno add "$P" testpoint "$x" "$y" --set Label="TP$i" ObsHead=0 >/dev/null
done

tarno solve "$P" >/dev/null

# The solved heads become the observations.
tarno results "$P" TPResults | awk -F, '
  NR == 1 { for (i = 1; i <= NF; i++) col[$i] = i; next }
  { print $col["Label"], $col["ModelHead"] }' |
  while read -r label head; do
    tarno set "$P" "$label" ObsHead="$head" >/dev/null
  done

# The parameters put off by a factor of 3: the estimation is to find 20 and 0.0005.
tarno model "$P" AQHydCond=60 >/dev/null
tarno set "$P" Upland Recharge=0.0015 >/dev/null
echo "$P"
