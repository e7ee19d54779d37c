"""Documents in Debian's packages, of as many programs and times as possible."""

from __future__ import annotations

from dataclasses import dataclass


@dataclass
class Document:
    package: str
    path: str  # in the package; a pattern
    made_by: str
    page: int = 1


DOC = "usr/share/doc"
DOCUMENTS: dict[str, Document] = {
    "bash": Document("bash-doc", f"{DOC}/bash/bash.pdf", "Ghostscript 10 from groff, PDF 1.7", 87),
    "bash-reference": Document("bash-doc", f"{DOC}/bash/bashref.pdf", "pdfTeX 1.40.24, cross-reference streams", 196),
    "bzip2": Document("bzip2-doc", f"{DOC}/bzip2/manual.pdf.gz", "pdfTeX 1.40.14 with PassiveTeX"),
    "camlpdf": Document("libcamlpdf-ocaml-dev", f"{DOC}/libcamlpdf-ocaml-dev/introduction_to_camlpdf.pdf", "pdfTeX 1.40.22"),
    "camlpdf-hello": Document("libcamlpdf-ocaml-dev", f"{DOC}/libcamlpdf-ocaml-dev/examples/hello.pdf", "CamlPDF, PDF 1.1"),
    "padauk": Document("fonts-sil-padauk", f"{DOC}/fonts-sil-padauk/documentation/Padauk-features.pdf.gz",
                       "LibreOffice 7.1, landscape, PDF 1.6", 4),
    "crc": Document("zlib1g-dev", f"{DOC}/zlib1g-dev/crc-doc.1.0.pdf.gz", "MiKTeX's pdfTeX 1.40.10"),
    "cups-classified": Document("cups-filters", "usr/share/cups/data/classified.pdf", "Ghostscript 9.14, PDF 1.2"),
    "cups-default": Document("cups-filters", "usr/share/cups/data/default.pdf", "cairo 1.10"),
    "cups-form": Document("cups-filters", "usr/share/cups/data/form_english.pdf", "LibreOffice 4.0, form"),
    "cups-form-russian": Document("cups-filters", "usr/share/cups/data/form_russian.pdf", "LibreOffice 4.0, form"),
    "cups-test-page": Document("cups-filters", "usr/share/cups/data/default-testpage.pdf", "cairo 1.16"),
    "debian-faq": Document("debian-faq", f"{DOC}/debian/FAQ/debian-faq.en.pdf.gz", "xdvipdfmx 20210609", 73),
    "evolver": Document("evolver-doc", f"{DOC}/evolver/manual270.pdf", "MiKTeX's dvipdfmx", 291),
    "fontconfig": Document("fontconfig", f"{DOC}/fontconfig/fontconfig-user.pdf.gz", "pdfTeX 1.40.22, odd page size"),
    "graph-guide": Document("graphviz-doc", f"{DOC}/graphviz/pdf/dottyguide.pdf.gz", "Acrobat Distiller 3.01, PDF 1.2", 32),
    "graph-layout": Document("graphviz-doc", f"{DOC}/graphviz/pdf/neatoguide.pdf.gz", "pdfTeX 1.10b", 11),
    "graph-manual": Document("graphviz-doc", f"{DOC}/graphviz/pdf/acyclic.1.pdf.gz", "Ghostscript 10, PDF 1.4"),
    "graph-viewer": Document("graphviz-doc", f"{DOC}/graphviz/pdf/smyrna.pdf.gz", "pdfTeX 1.40.3"),
    "hierarchy": Document("debian-policy", f"{DOC}/debian-policy/fhs/fhs-3.0.pdf.gz", "Apache FOP 1.1"),
    "icon-hand": Document("python-matplotlib-data", "usr/share/matplotlib/mpl-data/images/hand.pdf", "cairo, 128 × 128 points"),
    "icon-help": Document("python-matplotlib-data", "usr/share/matplotlib/mpl-data/images/help.pdf",
                          "matplotlib 2, 72 × 72 points"),
    "icon-plot": Document("python-matplotlib-data", "usr/share/matplotlib/mpl-data/images/matplotlib.pdf", "matplotlib 1.5"),
    "lcms": Document("liblcms2-dev", f"{DOC}/liblcms2-dev/LittleCMS?.?? API.pdf.gz", "Microsoft Word 2021"),
    "mime": Document("shared-mime-info", f"{DOC}/shared-mime-info/shared-mime-info-spec.pdf", "pdfTeX 1.40.22, odd page size"),
    "nettle": Document("nettle-dev", f"{DOC}/nettle-dev/nettle.pdf.gz", "pdfTeX 1.40.21", 111),
    "policy": Document("debian-policy", f"{DOC}/debian-policy/policy.pdf.gz", "xdvipdfmx 20211117", 193),
    "reference-card": Document("debian-refcard", f"{DOC}/debian-refcard/refcard-ja-a4.pdf.gz", "XeTeX, landscape, Japanese", 2),
    "reportlab": Document("python-reportlab-doc", f"{DOC}/python-reportlab-doc/reportlab-userguide.pdf", "ReportLab", 134),
    "siscone": Document("siscone-doc-pdf", f"{DOC}/siscone-doc-pdf/pdf/refman.pdf.gz", "Ghostscript 10 from pdfTeX", 337),
    "speex": Document("speex-doc", f"{DOC}/speex/manual.pdf.gz", "Ghostscript 8.61, PDF 1.3", 65),
    "vym": Document("vym", f"{DOC}/vym/vym.pdf", "pdfTeX 1.40.16", 54),
}
# Their cross-reference tables point to nowhere.
DAMAGED = ["graph-guide"]
