"""Stores the inputs with which a fuzz target starts. The text file fuzz/corpus/<target>.txt has one escaped input per
line.

    corpus.py unpack <target> <folder>     writes one file per input
    corpus.py pack <target> <folder>       replaces the inputs of the target by the files of a folder
"""

import hashlib
import sys
from pathlib import Path

CORPUS = Path(__file__).with_name("corpus")


def unpack(target, folder):
    folder.mkdir(parents=True, exist_ok=True)
    file = CORPUS / f"{target}.txt"
    for line in file.read_text().splitlines() if file.exists() else []:
        data = line.encode().decode("unicode_escape").encode("latin-1")
        (folder / hashlib.sha1(data).hexdigest()).write_bytes(data)


def pack(target, folder):
    inputs = sorted({file.read_bytes() for file in folder.iterdir()})
    lines = [data.decode("latin-1").encode("unicode_escape").decode() for data in inputs]
    (CORPUS / f"{target}.txt").write_text("".join(f"{line}\n" for line in lines))


if __name__ == "__main__":
    {"unpack": unpack, "pack": pack}[sys.argv[1]](sys.argv[2], Path(sys.argv[3]))
