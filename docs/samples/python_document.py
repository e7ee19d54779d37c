#!/usr/bin/env python3
"""Puts the ink of signature.ink into a PDF document and seals it:
python_document.py DOCUMENT OUTPUT CERTIFICATE.p12 PASSWORD-FILE"""

import sys
from pathlib import Path

from scribera import DocumentError, sign_pdf


def main() -> int:
    document, output, certificate, password_file = map(Path, sys.argv[1:])
    try:
        sign_pdf(
            document,
            output,
            ink=Path("signature.ink").read_text(),
            model="K420",
            page=1,
            at=(60, 120),
            width=180,
            show=["name", "date"],
            certificate=certificate,
            password=password_file.read_text().strip(),
            reason="Current account agreement",
        )
    except DocumentError as error:
        print(f"not signed: {error}", file=sys.stderr)
        return 1
    print(f"{output} is signed")
    return 0


if __name__ == "__main__":
    sys.exit(main())
