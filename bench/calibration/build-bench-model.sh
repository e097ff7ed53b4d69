#!/usr/bin/env bash
# Builds the estimation benchmark's model with tarnocmd: 20 head-specified streams of
# 50 segments each (1,000 line-sink segments), two recharge areas, three wells and 50
# test points whose observations are the heads of the solved model; then puts the
# tagged parameters off by a factor of 3.
#
#   bench/calibration/build-bench-model.sh <program dir> <scratch dir> <2|5>
#
# With 2 the parameters are the aquifer's conductivity (Kaq) and one area's recharge
# (R1); with 5 also the other area's recharge (R2) and the resistance of the odd and
# of the even streams (Res1, Res2). Prints the project's path.
set -euo pipefail
[ $# -eq 3 ] || { echo "usage: $0 <program dir> <scratch dir> <2|5>" >&2; exit 2; }
TARNOCMD="$(cd "$1" && pwd)/tarnocmd"
SCRATCH="$2"
NPAR="$3"
mkdir -p "$SCRATCH"
cd "$SCRATCH"
export TARNO_CONFIG_DIR="${TARNO_CONFIG_DIR:-$PWD/config}"
P="$PWD/bench$NPAR.trn"
rm -f "$P"
find . -maxdepth 1 -type f -iname "bench$NPAR.*" -delete
tarno() { "$TARNOCMD" "$@"; }
five=$([ "$NPAR" = 5 ] && echo 1 || echo 0)

tarno new "$P" --yes --base-name "bench$NPAR" --description "Estimation benchmark" >/dev/null
tarno model "$P" AQBase=0 AQThickness=40 AQHydCond=15 AQPorosity=0.25 \
  chkScenarioHydCond=1 ScenHydCond=Kaq SOLVERIterations=3 >/dev/null
for ((k = 0; k < 20; k++)); do
  y=$((k * 250))
  coords=""
  for ((i = 0; i <= 50; i++)); do coords="$coords $((i * 100)) $((y + (i % 2) * 20))"; done
  tag=$([ $((k % 2)) -eq 1 ] && echo Res1 || echo Res2)
  res=$([ $((k % 2)) -eq 1 ] && echo 1 || echo 2)
  # shellcheck disable=SC2086
  tarno add "$P" linesink $coords --set Label="S$k" HeadSpecified=1 \
    StartingHead="$(awk -v k=$k 'BEGIN { print 30 - 0.1 * k }')" \
    EndingHead="$(awk -v k=$k 'BEGIN { print 29 - 0.1 * k }')" \
    Resistance=$res Width=5 Depth=1 chkScenario=$five ScenResistance=$tag >/dev/null
done
tarno add "$P" inhomogeneity 500 600 2000 600 2000 2100 500 2100 \
  --set Label=A1 ChangeR=1 Recharge=0.0004 chkScenarioRecharge=1 ScenRecharge=R1 >/dev/null
tarno add "$P" inhomogeneity 2800 2600 4500 2600 4500 4100 2800 4100 \
  --set Label=A2 ChangeR=1 Recharge=0.0008 chkScenarioRecharge=$five ScenRecharge=R2 >/dev/null
tarno add "$P" well 1200 1380 --set Label=W1 Head=500 Radius=0.3 >/dev/null
tarno add "$P" well 3600 3380 --set Label=W2 Head=400 Radius=0.3 >/dev/null
tarno add "$P" well 2500 880 --set Label=W3 Head=300 Radius=0.3 >/dev/null
n=0
for ((i = 0; i < 10; i++)); do
  for ((j = 0; j < 5; j++)); do
    n=$((n + 1))
    tarno add "$P" testpoint $((250 + i * 500)) $((130 + j * 1000 + (i % 4) * 250)) \
      --set Label="TP$n" ObsHead=0 >/dev/null
  done
done
tarno solve "$P" >/dev/null
tarno results "$P" TPResults | awk -F, '
  NR == 1 { for (i = 1; i <= NF; i++) col[$i] = i; next }
  { print $col["Label"], $col["ModelHead"] }' |
  while read -r label head; do tarno set "$P" "$label" ObsHead="$head" >/dev/null; done
tarno model "$P" AQHydCond=45 >/dev/null
tarno set "$P" A1 Recharge=0.0012 >/dev/null
if [ "$five" = 1 ]; then
  tarno set "$P" A2 Recharge=0.0024 >/dev/null
  for ((k = 0; k < 20; k++)); do
    tarno set "$P" "S$k" Resistance=$([ $((k % 2)) -eq 1 ] && echo 3 || echo 6) >/dev/null
  done
fi
echo "$P"
