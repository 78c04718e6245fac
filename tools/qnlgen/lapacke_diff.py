"""lapacke.sig -> the cases of the differential LAPACKE harness (tests/lapacke/diff_main.cpp).

    lapacke-diff TABLE OUT.inc

For every routine of the template and each layout, one case: the arguments of the
high level with sizes chosen by name (n 5, m 6, nrhs 2, ...), leading dimensions one
above the least the layout allows, every floating array filled with one deterministic
pattern whose diagonal is made dominant (well-conditioned, positive definite where the
routine needs it), and a typed caller that the harness runs on the facade and on
Debian's liblapacke with identical copies.
"""
import re
from pathlib import Path

from .common import banner, split_top, write_if_changed
from .lapacke import INT_ARRAYS, SHAPES, TYPES, WORKSPACES, classify, parse
from .lapacke import OWN as OWN_OUTPUT

INTS = {"m": 6, "n": 5, "k": 3, "nrhs": 2, "kl": 1, "ku": 2, "kd": 2, "ka": 2, "kb": 1, "ilo": 1, "ihi": 5,
        "itype": 1, "il": 1, "iu": 2, "nb": 2, "mb": 2, "l": 0, "p": 3, "q": 2, "ncvt": 2, "nru": 2, "ncc": 2,
        "lda": 0, "ijob": 0, "ifst": 1, "ilst": 2, "isgn": 1, "n1": 2, "n2": 3, "kbot": 5, "ktop": 1, "nv": 2,
        "j1": 1, "nh": 5, "incx": 1, "idist": 1, "iseed": 1, "tsize": 256, "mb1": 6, "ltb": 64}
CHARS = {"uplo": "U", "trans": "N", "transr": "N", "diag": "N", "side": "L", "jobz": "V", "jobu": "A",
         "jobvt": "A", "jobvl": "V", "jobvr": "V", "compz": "I", "compq": "I", "norm": "O", "range": "A",
         "vect": "Q", "sort": "N", "fact": "N", "direct": "F", "storev": "C", "howmny": "A", "job": "N",
         "jobq": "N", "jobu1": "N", "jobu2": "N", "jobv1t": "N", "jobv2t": "N", "jobp": "N", "jobr": "N",
         "jobt": "N", "jobv": "N", "jobu": "A", "equed": "N", "order": "E", "id": "I", "type": "G",
         "transa": "N", "transb": "N", "pivot": "V", "signs": "E", "way": "C", "eigsrc": "Q", "initv": "N",
         "cmach": "E", "dist": "U", "sym": "N", "pack": "N", "joba": "C", "balanc": "N", "sense": "N",
         "sides": "L", "compact": "N"}
SCALARS = {"vl": -1.0, "vu": 10.0, "abstol": 0.0, "tol": 0.0, "alpha": 0.5, "beta": 0.25, "anorm": 1.0,
           "rcond": 0.0, "cfrom": 1.0, "cto": 2.0, "sigma": 0.5, "c": 0.6, "s": 0.8}
# Sizes and letters of one routine where the common ones would make a rejected call or one the
# stock library gets wrong: the generalized SVDs compute every factor (jobu "A" is ?gesvd's), and
# with p = m the stock ?ggsvp_work's row-major V of p by m rows (checked against ldv >= m) is
# the p by p matrix it should be.
OWN = {**{f: {"jobu": "U", "jobv": "V", "jobq": "Q"} for f in ("ggsvd", "ggsvd3", "ggsvp3")},
       "ggsvp": {"jobu": "U", "jobv": "V", "jobq": "Q", "p": 6},
       # ?tgsen: ijob 1 (with ijob 0 the stock ?tgsen passes no iwork that the routine then writes).
       "gesdd": {"jobz": "A"}, "tgexc": {"wantq": 1, "wantz": 1}, "tgsen": {"wantq": 1, "wantz": 1, "ijob": 1},
       # The two-stage eigensolvers compute eigenvalues only.
       **{f"{k}_2stage": {"jobz": "N"} for k in ("syev", "syevd", "syevr", "syevx", "heev", "heevd", "heevr",
                                                 "heevx", "sbev", "sbevd", "sbevx", "hbev", "hbevd", "hbevx",
                                                 "sygv", "hegv")},
       # Band reductions: form Q (vect "U"), or X of the split Cholesky reduction ("V").
       **{f: {"vect": "U"} for f in ("sbtrd", "hbtrd")}, **{f: {"vect": "V"} for f in ("sbgst", "hbgst")},
       # Factors of the full rank: at least as many columns as rows (m <= n); ?ggglm: m <= n <= m + p.
       **{f: {"m": 3} for f in ("orglq", "orgrq", "unglq", "ungrq", "tzrzf", "ggglm")},
       # Schur forms: "S" computes T as well; eigenvectors take mm = n columns; nzc holds all n.
       **{f: {"job": "S"} for f in ("hgeqz", "hseqr")}, "trexc": {"compq": "V"},
       # ?trsen: job "B" (the stock ?trsen with job "N" passes no iwork that the routine then writes).
       **{f: {"mm": 5} for f in ("tgevc", "trevc")}, "stemr": {"nzc": 5}, "trsen": {"compq": "V", "job": "B"},
       # ?disna takes its eigenvalues in order: two always are.
       "disna": {"job": "E", "m": 2},
       # ?geesx sorts, with both condition numbers (with sense "N" the stock real ?geesx passes
       # no iwork that the routine then writes).
       "geesx": {"sort": "S", "sense": "B"},
       "tgsja": {"jobu": "U", "jobv": "V", "jobq": "Q"},
       # Singular vectors of every singular value (range "A").
       # ?laswp: rows 6, 7, 8 exchanged with rows 1, 2, 3 (the fill's pivots 1 2 3 4 5 1 2 3 ...).
       "laswp": {"k1": 6, "k2": 8},
       "gesvdx": {"jobu": "V", "jobvt": "V"}, "gesvj": {"joba": "G", "jobu": "U", "jobv": "V", "mv": 3},
       # ?stein: two eigenvalues, each its own block of one row (the harness's iblock and isplit 1, 2).
       "stein": {"m": 2},
       # ?tgsna: both condition numbers of every eigenpair.
       "tgsna": {"job": "B", "mm": 5},
       # Two row blocks below the first (mb > n).
       **{f: {"m": 9, "mb": 7} for f in ("orgtsqr_row", "ungtsqr_row")}}
# Outputs of which the routine defines a part only: the rest is whatever the scratch copy held.
# ?lacpy: the stock library copies its scratch back over the triangle not referenced.
# ?gesvd's superb holds the unconverged superdiagonal only when it fails; the failing indices
# of ?gesvdx and ?bdsvdx are the rest of an integer workspace.
UNDEFINED = {"gesvd": "superb", "gesvdx": "superb", "bdsvdx": "superb", "getsqrhrt": "t", "lacpy": "b", "lacp2": "b", "larft": "t", "tfttr": "a", "tpttr": "a", "geqrt": "t", "geqrt2": "t", "geqrt3": "t", "tpqrt": "t", "tpqrt2": "t"}
# Outputs that the stock library leaves undefined in row-major only: its ?sytrf_aa_2stage
# factors into a scratch tb that it never copies back (tb is not a matrix of the layout).
ROW_UNDEFINED = {f"{k}_aa_2stage": "tb" for k in ("sytrf", "hetrf", "sysv", "hesv")}
# Row-major calls the stock library gets wrong, observed: only column-major is compared. Its
# ?sytrs_aa_2stage solves with a scratch tb that it never fills from the caller's; its
# ?tpmqrt_work rejects every row-major call with -2.
# ?gemqrt_work passes the caller's row-major ldv (at least k) as the copy's, which the Fortran
# routine rejects (-9) when the reflectors have more rows than that; ?orgtsqr_row_work fills
# its copy of T from a; ?tfsm_work from the left returns NaNs (its row-major results match
# the stock column-major call on the transposed b and the kit's transposed RFP a); ?langb_work
# hands the routine the caller's band with kl and ku exchanged and the norm as it is (the one
# norm of the transpose read as a band of the other layout: 41.5 for a matrix of one norm 12.5).
STOCK_ROW_FAULTS = {"sytrs_aa_2stage", "hetrs_aa_2stage", "tpmqrt", "gemqrt", "orgtsqr_row", "ungtsqr_row", "tfsm",
                    "langb"}
# Further option letters a routine runs with, each a case of its own in both layouts.
# The Schur drivers also sort, with condition numbers where they have them.
VARIANTS = {"gesdd": [{"jobz": "S"}, {"jobz": "O"}, {"jobz": "N"}], "bdsdc": [{"compq": "N"}],
            "gesvd": [{"jobu": "S", "jobvt": "S"}, {"jobu": "O", "jobvt": "N"}, {"jobu": "N", "jobvt": "O"}],
            "gesvdx": [{"range": "I"}, {"jobu": "N"}], "bdsvdx": [{"range": "I", "uplo": "L"}],
            **{f: [{"fact": "E"}] for f in ("gesvx", "gbsvx")}, "gesvj": [{"jobv": "A"}, {"jobv": "N", "jobu": "N"}],
            "sfrk": [{"trans": "T"}], "hfrk": [{"trans": "C"}],
            # P's reflectors of ?ormbr; the stock ?unmbr_work copies min(nq,k) of their nq columns
            # in row-major, so ?unmbr runs with Q's only.
            **{f: [{"norm": "I"}, {"norm": "F"}, {"norm": "M"}] for f in ("langb", "lantr")},
            "ormbr": [{"vect": "P"}], "gbbrd": [{"vect": "B"}, {"vect": "N"}],
            **{f: [{"sort": "S"}] for f in ("gees", "gges", "gges3")}, "ggesx": [{"sort": "S", "sense": "B"}],
            # Balancing that scales (6n reals of rwork), with both condition numbers.
            **{f: [{"balanc": "B", "sense": "B"}] for f in ("geevx", "ggevx")}}
# Calls the stock library gets wrong, observed: not compared.
STOCK_FAULTS = {"geqrt": "stock library writes past T in row-major (beyond nb rows)",
                "ssytri2x": "stock ssytri2x_ writes past a block of its own (valgrind)"}
# Right-side calls the stock library gets wrong, observed: only the left side is compared.
STOCK_RIGHT_FAULTS = {"unmlq": "stock ?unmlq_work transposes a with m columns from the right (heap corruption)"}
# Routines that apply a factorization: their a and t come from it (?geqr's T is opaque).
FACTORED_BY = {"gemqr": "geqr", "gemlq": "gelq"}
# Square inputs that must be upper triangular, Schur forms (?tgevc rejects an S that is not
# quasi-triangular and a P that is not triangular; the reorderings read the upper part only):
# the stock ?laset zeroes what lies below the diagonal.
UPPER = {"tgevc": ("s", "p"), "tgsna": ("a", "b"), "tgexc": ("a", "b"), "tgsen": ("a", "b"), "trexc": ("t",), "trsen": ("t",)}
FUNCS = {"max": max, "min": min, "abs": abs,
         "byrange": lambda r, every, some: every if r in "AV" else some if r == "I" else 1,
         "byside": lambda side, m, n: m if side == "L" else n,
         "bytrans": lambda trans, x, y: x if trans == "N" else y,
         "byvect": lambda vect, x, y: x if vect == "Q" else y,
         "ifset": lambda flag, x: x if flag else 0,
         "bysvd": lambda job, every, some: every if job == "A" else some if job == "S" else 0,
         "svjv": lambda jobv, n, mv: n if jobv == "V" else mv if jobv == "A" else 0,
         "pivrows": lambda k1, k2, ipiv, incx: max([1, k2] + [ipiv[k1 - 1 + (i - k1) * abs(incx)]
                                                              for i in range(k1, k2 + 1)]),
         "tsqrblocks": lambda m, n, mb: 1 if mb <= n or m <= n else -(-(m - n) // (mb - n)),
         # ?gesdd: columns of U, rows of VT (src/lapack/lapacke_sizes.h)
         "sddu": lambda jobz, m, n: m if jobz == "A" or (jobz == "O" and m < n) else min(m, n) if jobz == "S" else 0,
         "sddvt": lambda jobz, m, n: n if jobz == "A" or (jobz == "O" and m >= n) else min(m, n) if jobz == "S" else 0}


def ev(expr, vals):
    py = re.sub(r"\b([a-z_]\w*)\b", lambda m: m.group(1) if m.group(1) in FUNCS else
                f"vals[{m.group(1)!r}]", expr).replace("/", "//")
    return int(eval(py, {**FUNCS, "vals": vals}))


def undefined(r, a, row):
    """Whether the routine leaves output `a` partly undefined (in this layout)."""
    return a.name in (UNDEFINED.get(r.name[1:]), ROW_UNDEFINED.get(r.name[1:]) if row else None)


def shape_parts(a):
    return (a.word, split_top(a.extents), a.prec) if a.word in SHAPES else None


def case(r, layout, letters=None):
    """(args rows, ints) of one case, or None when a size is unknown; `letters` replaces
    some of the option letters of CHARS."""
    own = {**OWN.get(r.name[1:], {}), **(letters or {})}
    chars = {**CHARS, **own}
    vals = {}
    for a in r.args:
        if a.word == "i":
            vals[a.name] = own.get(a.name, INTS.get(a.name, 2))
        elif a.word == "c":
            vals[a.name] = chars.get(a.name, "N")
        elif a.word in INT_ARRAYS:  # the harness's fill (diff_main.cpp), for sizes read from it
            vals[a.name] = [i % 5 + 1 for i in range(256)]
    # Leading dimensions: one above the least the layout allows.
    row = layout == 101
    lds = {}
    diag = {}
    for a in r.args:
        sp = shape_parts(a)
        if not sp:
            continue
        shape, params, _ = sp
        if shape == "ge":
            rows, cols = ev(params[0], vals), ev(params[1], vals)
            lds[params[2]] = (cols if row else rows) + 1
            diag[a.name] = ("step", 0, lds[params[2]] + 1, min(rows, cols))
        elif shape in ("sy", "tr"):
            n = ev(params[-2], vals)
            lds[params[-1]] = n + 1
            diag[a.name] = ("step", 0, n + 2, n)
        elif shape == "gb":
            m, n, kl, ku = (ev(x, vals) for x in params[:4])
            lds[params[4]] = n + 1 if row else kl + ku + 2
            diag[a.name] = ("step", ku * (n + 1) if row else ku, 1 if row else kl + ku + 2, min(m, n))
            if row:
                diag[a.name] = ("step", ku * lds[params[4]], 1, min(m, n))
        elif shape in ("sb", "tb"):
            n, kd = ev(params[-3], vals), ev(params[-2], vals)
            up = chars["uplo"] == "U"
            lds[params[-1]] = n + 1 if row else kd + 2
            ld = lds[params[-1]]
            # Upper keeps the diagonal in band row kd, lower in row 0, in both layouts.
            first = (kd if up else 0) if not row else ((kd if up else 0) * ld)
            diag[a.name] = ("step", first, ld if not row else 1, n)
        elif shape in ("sp", "tp"):
            n = ev(params[-1], vals)
            up = (chars["uplo"] == "U") != row
            idx = [j * (j + 1) // 2 + j if up else j * (2 * n - j + 1) // 2 for j in range(n)]
            diag[a.name] = ("list", idx)
    for k, v in lds.items():
        vals[k] = v
    rows = []
    for a in r.args:
        if a.word in WORKSPACES or not a.hpos:
            continue
        w = a.word
        if w == "c":
            rows.append((0, "0", 0, 0.0, chars.get(a.name, "N"), ""))
        elif w == "c*":
            rows.append((1, "0", 0, 0.0, CHARS.get(a.name, "N"), ""))
        elif w == "i":
            rows.append((2, "0", vals[a.name], 0.0, "N", ""))
        elif w == "a":
            rows.append((3, a.prec, 0, SCALARS.get(a.name, 0.5), "N", ""))
        elif w == "y":
            rows.append((4, a.prec, 1, 0.0, "N", ""))
        elif w == "o":  # in and out (?tgexc's ifst, ilst): the routine's own value, else 1
            rows.append((5, "i", own.get(a.name, INTS.get(a.name, 1)), 0.0, "N", ""))
        elif w in INT_ARRAYS:
            most = max((v for v in vals.values() if isinstance(v, int)), default=8)
            rows.append((6, "i", 4 * most + 16, 0.0, "N", ""))
        elif w == "f":  # a selection callback: the caller passes the harness's own
            rows.append((2, "0", 0, 0.0, "N", ""))
        elif w == OWN_OUTPUT:  # of the workspace's type: integers are compared exactly
            kind = 9 if undefined(r, a, row) else 6 if a.prec == "i" else 7
            rows.append((kind, a.prec, max(ev(a.extents, vals), 1), 0.0, "N", ""))
        elif w == "vec":
            length, *stride = split_top(a.extents)
            try:
                count = max(1 + (ev(length, vals) - 1) * abs(ev(stride[0], vals)) if stride else ev(length, vals), 1)
            except Exception:
                return None
            # A vector named d is a diagonal: dominant, like the matrices'.
            dl = ",".join(map(str, range(count))) if a.name in ("d", "df") else ""
            rows.append((9 if undefined(r, a, row) else 7, a.prec, count, 0.0, "N", dl))
        else:
            shape, params, ty = shape_parts(a)
            if shape == "ge":
                rws, cls = ev(params[0], vals), ev(params[1], vals)
                count = vals[params[2]] * max(rws if row else cls, 1)
            elif shape in ("sy", "tr"):
                count = vals[params[-1]] * max(ev(params[-2], vals), 1)
            elif shape == "gb":
                m, n = ev(params[0], vals), ev(params[1], vals)
                count = vals[params[4]] * max(m if row else n, 1) + vals[params[4]] * 2
            elif shape in ("sb", "tb"):
                count = vals[params[-1]] * max(ev(params[-3], vals), 1) + vals[params[-1]] * 2
            else:
                n = ev(params[-1], vals)
                count = n * (n + 1) // 2 + 1
            d = diag.get(a.name)
            if d is None:
                dl = ""
            elif d[0] == "step":
                dl = ",".join(str(d[1] + d[2] * j) for j in range(d[3]))
            else:
                dl = ",".join(map(str, d[1]))
            rows.append((9 if undefined(r, a, row) else 8, ty, count, 0.0, "N", dl))
    return rows


def caller(r):
    params = []
    k = 0
    for a in r.args:
        if a.word in WORKSPACES or not a.hpos:
            continue
        if a.word == "c":
            params.append(f"*static_cast<char*>(v[{k}])")
        elif a.word == "f":
            params.append("pick")
        elif a.word == "i":
            params.append(f"*static_cast<lapack_int*>(v[{k}])")
        elif a.word == "a":
            params.append(f"*static_cast<{TYPES[a.prec]}*>(v[{k}])")
        else:
            params.append(f"Ptr{{v[{k}]}}")
        k += 1
    # A routine without a matrix takes no layout.
    lead = "" if "+nolayout" in r.flags else "layout"
    params = ([lead] if lead else []) + params
    return (f"[](void* f, int layout, void* const* v) -> double {{ (void)layout; return "
            f"reinterpret_cast<decltype(&LAPACKE_{r.name})>(f)({', '.join(params)}); }}")


def prep(r):
    """A call of the factorization that makes the inputs of `r`, run on the stock library
    for both sides, or "" for a routine whose generated inputs serve as they are."""
    factor = FACTORED_BY.get(r.name[1:])
    upper = UPPER.get(r.name[1:], ())
    if not factor and not upper:
        return ""
    at = {a.name: k for k, a in enumerate(a for a in r.args if a.word not in WORKSPACES and a.hpos)}
    def val(n, ty="lapack_int"):
        return f"*static_cast<{ty}*>(v[{at[n]}])"
    if upper:
        fn = f"LAPACKE_{r.name[0]}laset"
        ty = TYPES[r.name[0]]
        # Below the diagonal of an n by n matrix: n-1 by n-1 from its second row.
        calls = "".join(
            f"f(layout, 'L', n - 1, n - 1, {ty}{{}}, {ty}{{}}, static_cast<{ty}*>(v[{at[m]}]) + "
            f"(layout == LAPACK_ROW_MAJOR ? {val('ld' + m)} : 1), {val('ld' + m)}); " for m in upper)
        return (f", [](void* lib, int layout, void* const* v) {{ auto f = reinterpret_cast<decltype(&{fn})>"
                f"(dlsym(lib, \"{fn}\")); const lapack_int n = {val('n')}; {calls}}}")
    # The reflectors: byside(side, m, n) by k for ?geqr, k by that for ?gelq.
    rows = f"({val('side', 'char')} == 'L' ? {val('m')} : {val('n')})"
    dims = f"{rows}, {val('k')}" if factor == "geqr" else f"{val('k')}, {rows}"
    fn = f"LAPACKE_{r.name[0]}{factor}"
    return (f", [](void* lib, int layout, void* const* v) {{ reinterpret_cast<decltype(&{fn})>(dlsym(lib, \"{fn}\"))"
            f"(layout, {dims}, Ptr{{v[{at['a']}]}}, {val('lda')}, Ptr{{v[{at['t']}]}}, {val('tsize')}); }}")


def main(argv):
    table, out = argv
    lines = [banner(table)]
    cases, skipped = [], []
    for r in parse(table):
        if r.skip is None:
            try:
                classify(r)
            except (ValueError, KeyError) as e:
                r.skip = f"table row: {e}"
        fault = STOCK_FAULTS.get(r.name) or STOCK_FAULTS.get(r.name[1:])
        if r.skip is None and fault:
            skipped.append((r.name, fault))
            continue
        if r.skip is not None:
            skipped.append((r.name, f"not in the template: {r.skip}"))
            continue
        # A routine with a side letter runs from the right as well: its sizes change with it.
        variants = [{}] + VARIANTS.get(r.name[1:], [])
        if any(a.name == "side" and a.word == "c" for a in r.args) and r.name[1:] not in STOCK_RIGHT_FAULTS:
            variants.append({"side": "R"})
        layouts = (102,) if "+nolayout" in r.flags or r.name[1:] in STOCK_ROW_FAULTS else (101, 102)
        for layout, (v, letters) in ((lay, s) for lay in layouts for s in enumerate(variants)):
            rows = case(r, layout, letters)
            if rows is None:
                if layout == 102 and not letters:
                    skipped.append((r.name, "no generated input (unsized vector)"))
                continue
            arr = f"K_{r.name}_{layout}{f'_{v}' if v else ''}"
            items = []
            for kind, ty, count, dval, ch, dl in rows:
                items.append(f"{{{kind}, '{ty}', {count}, {dval!r}, '{ch}', \"{dl}\"}}")
            lines.append(f"static const ArgCase {arr}[] = {{{', '.join(items)}}};\n")
            cases.append(f"{{\"LAPACKE_{r.name}\", {layout}, {len(rows)}, {arr}, {caller(r)}{prep(r)}}}")
    lines.append("static const Case kCases[] = {\n  " + ",\n  ".join(cases) + "};\n")
    lines.append("static const Skipped kSkipped[] = {\n  " +
                 ",\n  ".join(f"{{\"LAPACKE_{n}\", \"{why}\"}}" for n, why in skipped) + "};\n")
    write_if_changed(Path(out), "".join(lines))
