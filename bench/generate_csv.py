#!/usr/bin/env python3
"""Writes a CSV file of about SIZE MiB for the reader benchmark: 10 columns of
mixed text and numbers, with some quoted fields (holding commas and doubled
quotes). Usage: generate_csv.py PATH [SIZE_MIB]"""
import random
import sys


def main():
    path = sys.argv[1]
    size = int(sys.argv[2]) * (1 << 20) if len(sys.argv) > 2 else 256 * (1 << 20)
    rng = random.Random(7)
    words = ["alpha", "beta", "gamma", "delta", "epsilon", "zeta", "eta", "theta", "iota", "kappa"]
    rows = []
    for i in range(20000):
        row = [
            str(i),
            f"{rng.uniform(-1e4, 1e4):.4f}",
            rng.choice(words),
            str(rng.randint(0, 1 << 31)),
            f'"{rng.choice(words)}, {rng.choice(words)}"' if i % 3 == 0 else rng.choice(words),
            f"{rng.random():.6e}",
            '"say ""hi"""' if i % 7 == 0 else "plain",
            str(rng.randint(-500, 500)),
            rng.choice(words) + "_" + str(i % 97),
            f"{rng.uniform(0, 1):.3f}",
        ]
        rows.append(",".join(row) + "\n")
    block = "".join(rows).encode()
    with open(path, "wb") as out:
        out.write(b"id,x,name,n,pair,e,quote,k,tag,p\n")
        written = 0
        while written < size:
            out.write(block)
            written += len(block)


if __name__ == "__main__":
    main()
