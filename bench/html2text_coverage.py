#!/usr/bin/python3
"""Word coverage of `norvane html2text --body` against `lynx -dump`.

For every page of a documentation tree (by default the Python 3.11 HTML
documentation) both tools convert the page, and the alphanumeric words of
each output (lower-cased, split on anything that is not a Unicode letter or
digit) are compared as multisets:

  ours/lynx  how much of lynx's text ours holds (sum of min counts / lynx's)
  lynx/ours  how much of ours lynx holds

A page where either direction is below the threshold is listed at the end
with its most frequent missing words in each direction, followed by the
words missing most often over the whole corpus and the overall counts (as
multisets and as sets of distinct words). The script is a report: it always
exits 0.

Usage: html2text_coverage.py [--norvane PATH] [--root DIR] [--threshold PCT]
                             [--limit N] [--jobs N] [--quiet]
"""

import argparse
import collections
import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
REPO = HERE.parent
WORD = re.compile(r"[^\W_]+")


def default_norvane():
    for candidate in (REPO / "build/release/src/cli/norvane", REPO / "build-htmlbench/src/cli/norvane"):
        if os.access(candidate, os.X_OK):
            return str(candidate)
    return str(REPO / "build/release/src/cli/norvane")


def words(text):
    return collections.Counter(WORD.findall(text.lower()))


def run(command):
    try:
        done = subprocess.run(command, capture_output=True, timeout=120)
    except (OSError, subprocess.TimeoutExpired) as error:
        return None, str(error)
    if done.returncode != 0:
        return None, done.stderr.decode("utf-8", "replace").strip()[:200]
    return done.stdout.decode("utf-8", "replace"), None


def compare(norvane, page):
    ours, error = run([norvane, "html2text", "--body", str(page)])
    if ours is None:
        return page, None, None, "norvane: " + error
    theirs, error = run(["lynx", "-dump", "-nolist", "-display_charset=utf-8", str(page)])
    if theirs is None:
        return page, None, None, "lynx: " + error
    return page, words(ours), words(theirs), None


def covered(part, whole):
    """Share of the multiset `whole` that `part` holds, in percent."""
    total = sum(whole.values())
    if total == 0:
        return 100.0
    return 100.0 * sum(min(count, part[word]) for word, count in whole.items()) / total


def top(counter, n):
    return ", ".join(f"{word}×{count}" for word, count in counter.most_common(n)) or "-"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--norvane", default=os.environ.get("NORVANE") or default_norvane())
    parser.add_argument("--root", default="/usr/share/doc/python3.11/html")
    parser.add_argument("--threshold", type=float, default=95.0)
    parser.add_argument("--limit", type=int, default=0, help="only the first N pages")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--quiet", action="store_true", help="no per-page lines")
    args = parser.parse_args()

    pages = sorted(pathlib.Path(args.root).rglob("*.html"))
    if args.limit:
        pages = pages[: args.limit]
    if not pages:
        print(f"no pages under {args.root}")
        return 0
    if not os.access(args.norvane, os.X_OK):
        print(f"{args.norvane} is not an executable; build the norvane target or pass --norvane")
        return 0

    ours_total, lynx_total = collections.Counter(), collections.Counter()
    only_ours_total, only_lynx_total = collections.Counter(), collections.Counter()
    low, failures = [], []
    matched = 0
    if not args.quiet:
        print(f"{'ours/lynx':>9} {'lynx/ours':>9}  page")
    with concurrent.futures.ThreadPoolExecutor(max_workers=max(1, args.jobs)) as pool:
        for page, ours, lynx, error in pool.map(lambda p: compare(args.norvane, p), pages):
            name = str(page.relative_to(args.root))
            if error:
                failures.append((name, error))
                continue
            ours_in_lynx, lynx_in_ours = covered(ours, lynx), covered(lynx, ours)
            if not args.quiet:
                print(f"{ours_in_lynx:8.1f}% {lynx_in_ours:8.1f}%  {name}")
            ours_total += ours
            lynx_total += lynx
            matched += sum((ours & lynx).values())
            only_lynx, only_ours = lynx - ours, ours - lynx
            only_lynx_total += only_lynx
            only_ours_total += only_ours
            if ours_in_lynx < args.threshold or lynx_in_ours < args.threshold:
                low.append((name, ours_in_lynx, lynx_in_ours, only_lynx, only_ours))

    print()
    print(f"Pages under {args.threshold:g}% in either direction: {len(low)}")
    for name, ours_in_lynx, lynx_in_ours, only_lynx, only_ours in sorted(low, key=lambda x: min(x[1], x[2])):
        print(f"  {name}: ours/lynx {ours_in_lynx:.1f}%, lynx/ours {lynx_in_ours:.1f}%")
        print(f"    missing from ours: {top(only_lynx, 8)}")
        print(f"    missing from lynx: {top(only_ours, 8)}")

    print()
    print("Words missing most often over all pages")
    print(f"  from ours: {top(only_lynx_total, 20)}")
    print(f"  from lynx: {top(only_ours_total, 20)}")

    compared = len(pages) - len(failures)
    ours_words, lynx_words = sum(ours_total.values()), sum(lynx_total.values())
    ours_set, lynx_set = set(ours_total), set(lynx_total)
    print()
    print(f"Pages compared: {compared} of {len(pages)}")
    print(f"Words (multiset): ours {ours_words}, lynx {lynx_words}, in both {matched}")
    if lynx_words and ours_words:
        print(f"  coverage of lynx's words by ours: {100.0 * matched / lynx_words:.2f}%")
        print(f"  coverage of our words by lynx's:  {100.0 * matched / ours_words:.2f}%")
    if lynx_set and ours_set:
        both = len(ours_set & lynx_set)
        print(f"Distinct words: ours {len(ours_set)}, lynx {len(lynx_set)}, in both {both}")
        print(f"  coverage of lynx's vocabulary by ours: {100.0 * both / len(lynx_set):.2f}%")
        print(f"  coverage of our vocabulary by lynx's:  {100.0 * both / len(ours_set):.2f}%")
    for name, error in failures:
        print(f"failed: {name}: {error}", file=sys.stderr)
    return 0


if __name__ == "__main__":
    try:
        main()
    except Exception as error:  # a report never fails the caller
        print(f"html2text_coverage: {error}", file=sys.stderr)
    sys.exit(0)
