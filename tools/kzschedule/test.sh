#!/usr/bin/env bash
# Runs kzschedule on hand-checked projects and bad input: test.sh TOOL TESTDATA BUNDLED WORKDIR
set -uo pipefail
Tool=$1 Data=$2 Bundled=$3 Work=$4
rm -rf "$Work" && mkdir -p "$Work" && cd "$Work" || exit 1
Failures=0

fail() { echo "FAIL: $*"; Failures=$((Failures + 1)); }
# run EXPECTED-STATUS ARGS...: keeps stdout in out.txt, stderr in err.txt
run() {
  local Want=$1; shift
  "$Tool" "$@" >out.txt 2>err.txt
  local Got=$?
  [ "$Got" = "$Want" ] || fail "kzschedule $* exited $Got, wanted $Want: $(cat err.txt)"
}
has() { grep -qF -- "$2" "$1" || fail "$1 lacks '$2': $(cat "$1")"; }
# row ID: duration, times, slack and critical mark from the table line of task ID
row() { grep -E "^$1 " out.txt | awk '{ s = $NF == "*" ? NF - 6 : NF - 5; r = $s; for (i = s + 1; i <= NF; i++) r = r " " $i; print r }'; }
is() { [ "$1" = "$2" ] || fail "$3: got '$1', wanted '$2'"; }

# Durations, times, slack and critical marks worked out by hand.
run 0 "$Data/tiny.csv"
is "$(row a)" "3 0 3 0 3 0 *" "tiny a"
is "$(row b)" "2 3 5 5 7 2" "tiny b"
is "$(row c)" "4 3 7 3 7 0 *" "tiny c"
is "$(row d)" "1 7 8 7 8 0 *" "tiny d"
is "$(row e)" "2 0 2 6 8 6" "tiny e"
has out.txt 'Delta, the "last"'
has out.txt "project duration: 8"
has out.txt "critical path: a -> c -> d"
is "$(grep -c 'critical path:' out.txt)" 1 "tiny has one critical path"

run 0 "$Data/tie.csv"
has out.txt "project duration: 6"
has out.txt "critical path: a -> b -> d"
has out.txt "critical path: a -> c -> d"

# A stretch: from the start of c to the finish of d.
run 0 --from c --to d --quiet "$Data/tiny.csv"
has out.txt "stretch c to d: 5"
has out.txt "critical path: c -> d"
run 0 --from b --to d --quiet "$Data/tiny.csv"
has out.txt "stretch b to d: 3"
run 0 --from d --to a --quiet "$Data/tiny.csv"
has out.txt "stretch d to a: the finish does not follow the start"
run 0 --from e --quiet "$Data/tiny.csv"
has out.txt "stretch e to project finish: 2"
run 0 --events --from 2 --to 4 --quiet "$Data/events.csv"
has out.txt "stretch 2 to 4: 4"
has out.txt "critical path: 2-4"
run 2 --from nothere "$Data/tiny.csv"
has err.txt 'no task or event "nothere"'

# The network's own form: the unnamed zero-duration edge is a link, not a task.
run 0 --events "$Data/events.csv"
has out.txt "project duration: 8"
has out.txt "critical path: 1-2 -> 2-4 -> 4-5"
is "$(row 2-3)" "2 3 5 5 7 2" "events Beta"
is "$(grep -c -- '-->' out.txt)" 0 "links are not listed"

# UTF-8 with a byte-order mark and UTF-16 with one read the same as plain UTF-8.
"$Tool" "$Data/tiny.csv" >plain.txt
{ printf '\xef\xbb\xbf'; cat "$Data/tiny.csv"; } >bom8.csv
{ printf '\xff\xfe'; iconv -f UTF-8 -t UTF-16LE "$Data/tiny.csv"; } >le16.csv
{ printf '\xfe\xff'; iconv -f UTF-8 -t UTF-16BE "$Data/tiny.csv"; } >be16.csv
for F in bom8 le16 be16; do
  run 0 $F.csv
  cmp -s out.txt plain.txt || fail "$F.csv reads differently"
done

# Outputs, and the stored form read back gives the same schedule.
run 0 --csv table.csv --svg chart.svg --dot net.dot --save net.kzn "$Data/tiny.csv"
cp out.txt saved.txt
has table.csv 'd,"Delta, the ""last""",1,7,8,7,8,0,yes'
has table.csv 'e,Epsilon,2,0,2,6,8,6,no'
has chart.svg "<svg"
has chart.svg "Gamma"
has net.dot "digraph project"
has net.dot "style=dashed"
is "$(grep -c -- '->' net.dot)" 13 "dot edges: 5 tasks, 4 dependencies, 2 + 2 project links"
is "$(grep -c 'color=red' net.dot)" 7 "dot critical edges: a, c, d, the two links between them and two project links"
has net.dot 'label="Delta, the \"last\" (1)"'
run 0 --load net.kzn
cmp -s out.txt saved.txt || fail "--load gives a different schedule: $(diff saved.txt out.txt)"
run 0 --load net.kzn --save again.kzn
run 0 --load again.kzn
cmp -s out.txt saved.txt || fail "a network stored twice gives a different schedule"
run 0 --load net.kzn --from c --to d --quiet
has out.txt "stretch c to d: 5"

# Bad input: file, line and cause, status 1, and no output file.
bad() {
  local File=$1 Text=$2; shift 2
  run 1 "$@" --csv bad-out.csv "$File"
  has err.txt "$Text"
  [ ! -e bad-out.csv ] && [ ! -e bad-out.csv.tmp ] || fail "output written for $File"
}
bad "$Data/unknown.csv" 'unknown.csv:3: unknown predecessor "x" of task "b"'
bad "$Data/duplicate.csv" 'duplicate.csv:4: duplicate task id "a" (first on line 2)'
bad "$Data/negative.csv" 'negative.csv:3: the duration "-2" is negative'
bad "$Data/nonnumeric.csv" 'nonnumeric.csv:3: the duration "two" is not a whole number'
bad "$Data/cycle.csv" 'dependency cycle: '
for T in a b c; do has err.txt " $T "; done
bad "$Data/unclosed.csv" 'unclosed.csv:2: a quoted field is not closed'
bad "$Data/multiline.csv" 'multiline.csv:4: the duration "x" is not a whole number'
bad "$Data/missing.csv" 'missing.csv: cannot read'
bad "$Data/eventcycle.csv" 'dependency cycle through events ' --events
run 1 --load "$Data/notstored.bin"
has err.txt "notstored.bin: not a stored activity network"
head -c 100 net.kzn >cut.kzn
run 1 --load cut.kzn
has err.txt "cut.kzn: not a stored activity network"
run 1 --csv no/such/dir/out.csv "$Data/tiny.csv"
has err.txt "no/such/dir/out.csv: cannot write"
run 2 --bogus "$Data/tiny.csv"
has err.txt "unknown option --bogus"
run 2
has err.txt "no project file given"

# Generated projects are repeatable and schedule.
run 0 --generate 2000 --seed 7 gen1.csv
run 0 --generate 2000 --seed 7 gen2.csv
cmp -s gen1.csv gen2.csv || fail "the same start value gives different projects"
is "$(wc -l <gen1.csv)" 2001 "generated lines"
run 0 --quiet gen1.csv
has out.txt "project duration: "

# The bundled project.
run 0 --svg house.svg "$Bundled"
has out.txt "project duration: "
has out.txt "critical path: A1 -> A2 -> A3"
has house.svg "Handover to owners"

[ "$Failures" = 0 ] && echo "all kzschedule checks passed"
exit $((Failures > 0))
