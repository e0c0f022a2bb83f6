#!/bin/sh
# run.sh DROP-IN SMALL WORK short|full
# LAPACK's and BLAS's own test programs, as Debian ships them, under the drop-in library, with every
# size served; SMALL is a folder with a liblumo.so.0 of small blocks. Prints what was tested and
# served. Fails if a test fails where the CPU library is the reference LAPACK, if one fails that
# another CPU library alone passes, or if a symbol that the programs can reach was never served.
# Exit 77: the programs are not installed.
#
# short: on the reference LAPACK in small blocks, of the linear equations general and definite
# matrices, QR and least squares; of mixed precision not xSPOSV, which is the CPU library's, and whose
# residuals, products of the BLAS's, are judged without a margin for their rounding. full: everything, on the reference LAPACK and on OpenBLAS, in
# small blocks and in the usual ones; then Octave's tests and R's functions, and the tests of NumPy
# and SciPy, Debian's and PyPI's.
set -u
dropin=$1 small=$2 work=$3 extent=$4 here=$(cd "$(dirname "$0")" && pwd)

lib=/usr/lib/$(gcc -print-multiarch)
lapack=$lib/lapack blas=$lib/blas
for needed in $lapack/xlintsts $blas/xblat3s $lapack/liblapack.so.3 $blas/libblas.so.3; do
    [ -e "$needed" ] && continue
    echo "skipped: $needed is not there (Debian's liblapack-test, libblas-test, liblapack3, libblas3)"
    exit 77
done

rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 1
callers_path=${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH} failed=0 LUMO_PLATFORM=${LUMO_PLATFORM:-software}
export LUMO_PLATFORM OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 LUMO_CROSSOVER=0

# run FOLDER PATH PRELOAD: all programs, their output in FOLDER.
run() {
    mkdir -p "$1"
    (
        cd "$1" || exit 1
        program() {  # NAME FILE INPUT
            LD_LIBRARY_PATH=$2$callers_path LD_PRELOAD=$3 LUMO_REPORT=$PWD/report "$4" <"$5" >"$1.out" 2>"$1.err"
            echo "exit status $?" >>"$1.out"
        }
        for t in s d c z; do
            input=$lapack/${t}test.in
            if [ "$extent" = short ]; then
                sed -E "/^[SDCZ][A-Z]/{/^.(GE|PO|QR|LS) /!d;}" "$input" >${t}test.in
                input=${t}test.in
            fi
            program xlintst$t "$2" "$3" $lapack/xlintst$t "$input"
            for part in lse sep svd; do
                program xeigtst$t.$part "$2" "$3" $lapack/xeigtst$t $lapack/$part.in
            done
        done
        for t in ds zc; do
            input=$lapack/${t}test.in
            if [ "$extent" = short ]; then
                sed '/^[DZ]PO/d' "$input" >${t}test.in
                input=${t}test.in
            fi
            program xlintst$t "$2" "$3" $lapack/xlintst$t "$input"
        done
        for t in s d c z; do
            for level in 2 3; do
                program xblat$level$t "$2" "$3" $blas/xblat$level$t $blas/${t}blat$level.in
                cat ${t}blat$level.out >>xblat$level$t.out  # what the program writes itself
                program x${t}cblat$level "$2" "$3" $blas/x${t}cblat$level $blas/${t}in$level
            done
        done
    )
}

# summary FOLDER: "tests error-exits failures" of the output in it. A program that does not come to
# its end is a failure, but for those that do not even start with this CPU library alone.
summary() {
    for out in "$1"/x*.out; do
        grep -qxs "$(basename "$out" .out)" "${1%%.*}.unstartable" && continue
        awk '
            function number(text) { gsub(/[^0-9]/, "", text); return text + 0 }
            /tests run\)/ { sub(/.*\(/, ""); tests += number($0) }
            /COMPUTATIONAL TESTS *\(/ { sub(/.*\(/, ""); tests += number($0) }
            /passed the tests of the error exits|PASSED THE TESTS OF ERROR-EXITS/ { exits++ }
            /out of +[0-9]+ tests failed/ {
                sub(/^[^:]*:/, ""); failures += $1; tests += $4 }
            /failed the tests of the error exits|FAILED THE TESTS OF ERROR-EXITS/ { failures++ }
            /FAILED ON CALL|FATAL ERROR|SUSPECT|Sanitizer/ { failures++ }
            /[Ee]nd of tests|END OF TESTS/ { ended = 1 }
            /^exit status/ && $3 != 0 { failures++ }
            END { print tests + 0, exits + 0, failures + !ended }' "$out"
    done | awk '{ t += $1; e += $2; f += $3 } END { print t + 0, e + 0, f + 0 }'
}

# stage NAME CPU-PATH LUMO-PATH BLOCKS: the programs under the drop-in, and for a full run alone.
printf '%-24s %8s %12s %9s %15s\n' "CPU library, blocks" tests error-exits failures "failures alone"
stage() {
    if [ "$extent" = full ] && [ ! -d "$1.alone" ]; then
        run "$1.alone" "$2" ""
        grep -l '^exit status 127' "$1".alone/*.out 2>/dev/null | sed 's|.*/||; s|\.out$||' \
            >"$1.unstartable"
        [ -s "$1.unstartable" ] && echo "$1: cannot start" $(cat "$1.unstartable")
    fi
    run "$1.$4" "$3:$2" "$dropin"
    with=$(summary "$1.$4") alone=- allowed=0
    if [ "$extent" = full ]; then
        alone=$(summary "$1.alone")
        [ "${with% *}" = "${alone% *}" ] || failed=1  # the same tests were run
        [ "$1" = reference ] || allowed=${alone##* }
    fi
    printf '%-24s %8d %12d %9d %15s\n' "$1, $4" $with "${alone##* }"
    if [ "${with##* }" -gt "$allowed" ] || [ "${with%% *}" = 0 ]; then failed=1; fi
}

reference=$lapack:$blas
stage reference $reference "$small" small
if [ "$extent" = full ]; then
    usual=$(dirname "$dropin")
    stage reference $reference "$usual" usual
    for openblas in $lib/openblas-*; do
        [ -e "$openblas/liblapack.so.3" ] || continue
        stage openblas "$openblas" "$small" small
        stage openblas "$openblas" "$usual" usual
        break
    done
fi

# Every symbol exported under its usual name, but LAPACKE's, which no program of Debian's tests.
echo
nm -D --defined-only "$dropin" | awk '$3 ~ /^[a-z0-9]+_$|^cblas_[a-z0-9]+$/ { print $3 }' | sort >symbols
cat ./*.small/report ./*.usual/report 2>/dev/null | awk '
    BEGIN { while ((getline symbol <"symbols") > 0) all[++count] = symbol
            printf "%-34s %10s %10s\n", "symbol", "served", "passed on" }
    { served[$1] += $2; passed[$1] += $4 }
    END { for (i = 1; i <= count; ++i) {
              printf "%-34s %10d %10d\n", all[i], served[all[i]], passed[all[i]]
              if (!served[all[i]]) { print all[i] " was never served"; bad = 1 } }
          exit bad || !count }' || failed=1

# python PROGRAM PACKAGE: its tests, which must all pass.
python() {
    echo
    if ! "$1" -c "import pytest, hypothesis, ${2%%.*}" 2>/dev/null; then
        echo "$2: python3-pytest, python3-hypothesis or the package is missing"
        failed=1
        return
    fi
    rm -f python.report
    LD_PRELOAD=$dropin LUMO_REPORT=$work/python.report "$1" -m pytest -v -p no:cacheprovider \
        --pyargs "$2" >"$2.out" 2>&1 || failed=1
    "$1" -c "import ${2%%.*} as it; print('$2', it.__version__, end=': ')"
    tail -1 "$2.out"
    cat python.report
}
# wheel PACKAGE: the same with what PyPI has, whose BLAS has names of its own. Each test must come out
# as it does without Lumo, and no symbol may be called without being served once.
outcomes='s/^([^ ]*::.* (PASSED|FAILED|ERROR|SKIPPED|XFAIL|XPASS)).*/\1/p'
wheel() {
    wheels/bin/python -m pytest -v -p no:cacheprovider --pyargs "$1" 2>&1 |
        sed -nE "$outcomes" | sort >"$1.alone"
    python wheels/bin/python "$1"
    sed -nE "$outcomes" "$1.out" | sort | diff "$1.alone" - || failed=1
    awk '/^scipy_/ { ++all; if (!$2) { print $1 " was never served"; bad = 1 } }
        END { exit bad || !all }' python.report || failed=1
}
# client NAME COMMAND...: what it prints must be the same as without Lumo, and something be served.
client() {
    name=$1 && shift
    echo
    if ! command -v "$1" >/dev/null; then
        echo "$name: $1 is not installed"
        failed=1
        return
    fi
    "$@" >"$name.alone" 2>"$name.err"
    rm -f "$name.report"
    LD_PRELOAD=$dropin LUMO_REPORT=$work/$name.report "$@" >"$name.out" 2>>"$name.err" || failed=1
    diff "$name.alone" "$name.out" || failed=1
    echo "$name: $(wc -l <"$name.out") lines, those without Lumo"
    cat "$name.report" || failed=1
}
if [ "$extent" = full ]; then
    client octave octave --no-gui --norc --quiet "$here/octave.m"
    client r Rscript "$here/r.R"
    python /usr/bin/python3 numpy.linalg
    python /usr/bin/python3 scipy.linalg
    if { /usr/bin/python3 -m venv wheels &&
        wheels/bin/pip install -q numpy scipy pytest hypothesis; } >pip.out 2>&1; then
        wheel numpy.linalg
        wheel scipy.linalg
    else
        printf '\nthe wheels of PyPI are left out: %s\n' "$(tail -1 pip.out)"
    fi
fi

[ $failed = 0 ] || echo "FAILED: see $work"
exit $failed
