#!/usr/bin/python3
"""Times w3lib.url.canonicalize_url over the URLs that bench/urls_bench.cc
measures: the http(s) runs found in /usr/share/doc/*/copyright and in the
pages of the Python manual, found by the same plain scan. The time is the
process's CPU time, as Google Benchmark reports it, so that a loaded machine
does not distort the ratio.

Run with Debian's interpreter: /usr/bin/python3 bench/urls_peer.py
"""
import glob
import os
import time

from w3lib.url import canonicalize_url

STOPS = set('"\'<>()[]{}`\\')
TRAILING = ".,;:!?*"


def scan(text, found):
    at = text.find("http")
    while at != -1:
        if text.startswith("http://", at) or text.startswith("https://", at):
            end = at
            while end < len(text) and text[end] > " " and text[end] not in STOPS:
                end += 1
            while end > at and text[end - 1] in TRAILING:
                end -= 1
            if end - at > 10:
                found.add(text[at:end])
        at = text.find("http", at + 4)


def gather():
    found = set()
    paths = sorted(glob.glob("/usr/share/doc/*/copyright"))
    for root, _, files in os.walk("/usr/share/doc/python3.11/html"):
        paths += [os.path.join(root, f) for f in files if f.endswith(".html")]
    for path in paths:
        if os.path.isfile(path):
            with open(path, "rb") as f:
                scan(f.read().decode("utf-8", "surrogateescape"), found)
    return sorted(found)


def main():
    urls = gather()
    best = None
    for _ in range(5):
        start = time.process_time()
        for url in urls:
            canonicalize_url(url)
        elapsed = time.process_time() - start
        best = elapsed if best is None else min(best, elapsed)
    print(f"urls {len(urls)}  best of 5: {best * 1e3:.1f} ms  {len(urls) / best / 1e6:.3f} M URLs/s")


if __name__ == "__main__":
    main()
