#!/usr/bin/env python3
"""Writes a CSV file whose records are one or a few very wide lines, for the
wide-record benchmark: FIELDS fields on each of LINES lines, numbers (whole
and with decimals) and words by turns.
Usage: generate_wide.py PATH FIELDS [LINES]"""
import sys


def main():
    path = sys.argv[1]
    fields = int(sys.argv[2])
    lines = int(sys.argv[3]) if len(sys.argv) > 3 else 1
    words = ["alpha", "beta", "gamma", "delta"]
    with open(path, "w") as out:
        for line in range(lines):
            row = []
            for i in range(fields):
                kind = i % 3
                if kind == 0:
                    row.append(str(i + line))
                elif kind == 1:
                    row.append(f"{(i % 1000) / 8:.3f}")
                else:
                    row.append(words[i % 4])
            out.write(",".join(row) + "\n")


if __name__ == "__main__":
    main()
