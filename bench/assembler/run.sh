#!/usr/bin/env bash
# Times mbasm against pasmo on a generated 20,000-line source with 2,000 labels.
# Usage: bench/assembler/run.sh [path/to/mbasm]
set -euo pipefail
mbasm=$(realpath "${1:-$(dirname "$0")/../../build/tools/mbasm/mbasm}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

python3 - "$work/big.asm" <<'PY'
import sys
ops = ["LD A,{n}", "ADD A,B", "LD HL,L{l}", "JR NZ,L{l}", "LD (IX+{d}),A", "CALL L{l}",
       "DB {n},{n},\"ab\"", "DW L{l},{n}*2+1", "SUB (HL)", "JP Z,L{l}"]
out = ["        ORG 0"]
label = 0
for i in range(20000 - 1):
    l = (i // 10) % 2000
    if i % 10 == 0 and label < 2000:
        out.append(f"L{label}:   NOP")
        label += 1
        continue
    line = ops[i % len(ops)].format(n=i % 200, l=max(0, label - 1), d=i % 100)
    out.append("        " + line)
open(sys.argv[1], "w").write("\n".join(out) + "\n")
PY

cd "$work"
t0=$(date +%s.%N); "$mbasm" big.asm >/dev/null; t1=$(date +%s.%N)
t2=$(date +%s.%N); pasmo big.asm big.bin >/dev/null; t3=$(date +%s.%N)
python3 - "$t0" "$t1" "$t2" "$t3" <<'PY'
import sys
t0, t1, t2, t3 = map(float, sys.argv[1:])
ours, theirs = t1 - t0, t3 - t2
print(f"mbasm: {ours:.3f} s   pasmo: {theirs:.3f} s   ratio mbasm/pasmo: {ours / theirs:.2f}")
PY
cmp big.bin big.obj >/dev/null && echo "identical bytes" || echo "bytes differ"
