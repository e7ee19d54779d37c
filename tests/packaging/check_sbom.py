#!/usr/bin/env python3
"""Compares what the packages say of themselves, in SPDX 2.3, with what they hold.

check_sbom.py PACKAGE...                Debian packages, wheels or archives of installations, each with its document
check_sbom.py --damaged PACKAGE...      the same, and that no fault put into a document or a package stays unseen
"""

from __future__ import annotations

import copy
import hashlib
import json
import re
import subprocess
import sys
import tarfile
import tempfile
import zipfile
from collections.abc import Callable
from functools import cache
from pathlib import Path
from typing import Any

# Of SPDX's list, those that may stand in these documents.
LICENSES = {
    "AFL-2.1",
    "Apache-2.0",
    "BSD-2-Clause",
    "BSD-3-Clause",
    "BSL-1.0",
    "CC0-1.0",
    "FTL",
    "GPL-2.0-only",
    "GPL-2.0-or-later",
    "GPL-3.0-or-later",
    "HPND",
    "IJG",
    "LGPL-2.1-or-later",
    "LGPL-3.0-only",
    "MIT",
    "MIT-Modern-Variant",
    "MPL-1.1",
    "Unicode-DFS-2016",
    "Zlib",
    "bzip2-1.0.6",
    "libpng-2.0",
}
EXCEPTIONS = {"GCC-exception-3.1"}
KINDS = {"CONTAINS", "DEPENDS_ON", "DESCENDANT_OF", "DESCRIBES", "DYNAMIC_LINK", "STATIC_LINK"}
IDENTIFIER = re.compile(r"SPDXRef-[A-Za-z0-9.-]+")
OF_DOCUMENT = {
    "SPDXID",
    "creationInfo",
    "dataLicense",
    "documentNamespace",
    "files",
    "hasExtractedLicensingInfos",
    "name",
    "packages",
    "relationships",
    "spdxVersion",
}
OF_PACKAGE = {
    "SPDXID",
    "copyrightText",
    "downloadLocation",
    "externalRefs",
    "filesAnalyzed",
    "licenseConcluded",
    "licenseDeclared",
    "name",
    "supplier",
    "versionInfo",
}
OF_FILE = {"SPDXID", "checksums", "copyrightText", "fileName", "fileTypes", "licenseConcluded", "licenseInfoInFiles"}


def output_of(*command: str | Path) -> str:
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


class Packed:
    """A package as it is unpacked."""

    def __init__(self, package: Path, folder: Path) -> None:
        self.unlisted: list[str] = []  # files that the document is silent about: itself, and what changes with it
        self.carried: dict[str, str | None] = {}  # files of other packages, and which these are
        if package.suffix == ".whl":
            root = self.open_wheel(package, folder)
        elif package.suffix == ".gz":
            root = self.open_archive(package, folder)
        else:
            root = self.open_debian_package(package, folder)
        document = root / self.unlisted[0] if self.unlisted else package.with_name(package.name.removesuffix(".tar.gz") + ".spdx.json")
        self.text = json.loads(document.read_text(encoding="utf-8"))
        self.files: dict[str, bytes] = {}
        self.needed: dict[str, set[str]] = {}
        for path in root.rglob("*"):
            name = "./" + path.relative_to(root).as_posix()
            if path.is_file() and not path.is_symlink() and name not in self.unlisted:
                self.files[name] = path.read_bytes()
                if self.files[name].startswith(b"\x7fELF"):
                    self.needed[name] = set(re.findall(r"NEEDED +(\S+)", output_of("objdump", "-p", path)))

    def open_debian_package(self, package: Path, folder: Path) -> Path:
        subprocess.run(["dpkg-deb", "-x", package, folder], check=True)
        fields = [output_of("dpkg-deb", "-f", package, field).strip() for field in ("Package", "Version", "Architecture")]
        self.name, self.version, self.architecture = fields
        shares_folder = output_of("dpkg-deb", "-f", package, "Multi-Arch").strip() == "same"
        document = f"{self.name}_{self.architecture}" if shares_folder else self.name
        self.unlisted = [f"./usr/share/doc/{self.name}/{document}.spdx.json"]
        return folder

    def open_wheel(self, package: Path, folder: Path) -> Path:
        with zipfile.ZipFile(package) as archive:
            archive.extractall(folder)
        self.name, self.version, _, _, platform = package.stem.split("-")
        self.architecture = "amd64" if platform.endswith("x86_64") else "arm64"
        information = f"./{self.name}-{self.version}.dist-info"
        self.unlisted = [f"{information}/sboms/{self.name}.spdx.json", f"{information}/RECORD"]
        for core in folder.glob("scribera/qt/lib/libQt*Core.so.*"):
            for path in core.parent.iterdir():
                self.carried["./" + path.relative_to(folder).as_posix()] = owner_of(path.name, self.architecture)
            for path in core.parents[1].glob("plugins/*/*"):
                place = f"qt{core.name[5]}/plugins/{path.parent.name}/{path.name}"
                self.carried["./" + path.relative_to(folder).as_posix()] = owner_of(place, self.architecture)
        return folder

    def open_archive(self, package: Path, folder: Path) -> Path:
        """Of an installation on this machine; its document lies beside it."""
        with tarfile.open(package) as archive:
            archive.extractall(folder)
        self.name, self.version, _ = package.name.rsplit("-", 2)
        self.architecture = output_of("dpkg", "--print-architecture").strip()
        (root,) = folder.iterdir()
        return root


@cache
def versions_of(package: str) -> list[str]:
    """More than one where it is installed for more than one architecture."""
    return output_of("dpkg-query", "-W", "-f", "${Version}\n", package).splitlines()


@cache
def owner_of(soname: str, architecture: str) -> str | None:
    """The package of Debian's that has the library, asked by the place where the loader finds it."""
    triplet = output_of("dpkg-architecture", "-a", architecture, "-q", "DEB_HOST_MULTIARCH").strip()
    for place in (f"/lib/{triplet}/{soname}", f"/usr/lib/{triplet}/{soname}"):
        outcome = subprocess.run(["dpkg-query", "-S", place], capture_output=True, text=True)
        if outcome.returncode == 0:
            return outcome.stdout.split(":")[0]
    return None


def license_faults(expression: str, own: set[str]) -> list[str]:
    if expression == "NOASSERTION":
        return []
    faults = []
    for part in re.split(r" (?:AND|OR) ", re.sub(r"[()]", "", expression)):
        name, _, exception = part.partition(" WITH ")
        if name not in LICENSES | own:
            faults.append(f"{name} is no licence")
        if exception and exception not in EXCEPTIONS:
            faults.append(f"{exception} is no exception")
    return faults


def faults_of(text: dict[str, Any], packed: Packed, own: dict[str, str]) -> list[str]:
    """Own are the libraries that the packages of the source have, and the packages that have them."""
    faults: list[str] = []

    def expect(condition: object, complaint: str) -> None:
        if not condition:
            faults.append(f"{packed.name}: {complaint}")

    for place, entries, fields in (
        ("the document", [text], OF_DOCUMENT),
        ("a package", text.get("packages", []), OF_PACKAGE),
        ("a file", text.get("files", []), OF_FILE),
    ):
        for entry in entries:
            expect(fields <= entry.keys(), f"{place} lacks {', '.join(sorted(fields - entry.keys()))}")
    if faults:
        return faults

    expect((text["spdxVersion"], text["dataLicense"], text["SPDXID"]) == ("SPDX-2.3", "CC0-1.0", "SPDXRef-DOCUMENT"), "its head")
    expect(re.fullmatch(r"https://[^\s#]+", text["documentNamespace"]), "its namespace")
    expect(re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", text["creationInfo"]["created"]), "its time")
    creators = text["creationInfo"]["creators"]
    expect(creators and all(re.match(r"(Organization|Tool|Person): \S", one) for one in creators), "who made it")
    licenses = {info["licenseId"] for info in text["hasExtractedLicensingInfos"]}
    expect(all(re.fullmatch(r"LicenseRef-[A-Za-z0-9.-]+", one) for one in licenses), "a licence's name")
    expect(all(info["extractedText"].strip() for info in text["hasExtractedLicensingInfos"]), "a licence without text")

    identifiers = [text["SPDXID"]] + [entry["SPDXID"] for entry in text["packages"] + text["files"]]
    expect(len(set(identifiers)) == len(identifiers), "two things have one identifier")
    expect(all(IDENTIFIER.fullmatch(one) for one in identifiers), "an identifier")
    relations = {(one["spdxElementId"], one["relationshipType"], one["relatedSpdxElement"]) for one in text["relationships"]}
    expect(len(relations) == len(text["relationships"]), "a relation is told twice")
    for one, kind, other in relations:
        expect(kind in KINDS, f"there is no relation {kind}")
        expect({one, other} <= set(identifiers), f"{one} {kind} {other}: one of them is not in the document")

    packages = {entry["SPDXID"]: entry for entry in text["packages"]}
    described = [packages.get(other) for one, kind, other in relations if kind == "DESCRIBES" and one == text["SPDXID"]]
    main = described[0] if len(described) == 1 else None
    if main is None:
        return [*faults, f"{packed.name}: it does not describe one package"]
    expect((main["name"], main["versionInfo"]) == (packed.name, packed.version), "it describes another package")
    for entry in text["packages"]:
        expect(entry["versionInfo"], f"{entry['name']} has no version")
        expect(entry["filesAnalyzed"] == (entry is main), f"the files of {entry['name']}")
        expect(re.match(r"(Organization|Person): \S", entry["supplier"]), f"the supplier of {entry['name']}")
        locators = [one["referenceLocator"] for one in entry["externalRefs"] if one["referenceType"] == "purl"]
        expect(len(locators) == 1 and re.fullmatch(r"pkg:(deb/[a-z]+|generic/[a-z]+|pypi)/[^/@\s]+@[^/@\s]+", locators[0]), f"where {entry['name']} is from")
        for expression in (entry["licenseConcluded"], entry["licenseDeclared"]):
            faults.extend(f"{packed.name}: {entry['name']}: {fault}" for fault in license_faults(expression, licenses))
        expect(entry["licenseDeclared"] != "NOASSERTION", f"no licence is told for {entry['name']}")

    files = {entry["fileName"]: entry for entry in text["files"]}
    expect(len(files) == len(text["files"]), "a file is named twice")
    for name in sorted(files.keys() ^ packed.files.keys()):
        expect(False, f"{name} is {'not in the package' if name in files else 'not in the document'}")
    for name in files.keys() & packed.files.keys():
        entry, content = files[name], packed.files[name]
        told = {one["algorithm"]: one["checksumValue"] for one in entry["checksums"]}
        expect(told == {"SHA1": hashlib.sha1(content).hexdigest(), "SHA256": hashlib.sha256(content).hexdigest()}, f"the sums of {name}")
        expect((main["SPDXID"], "CONTAINS", entry["SPDXID"]) in relations, f"{name} is contained in nothing")
        expect(entry["fileTypes"] == ["BINARY" if name in packed.needed else "OTHER"], f"the type of {name}")
        for expression in [entry["licenseConcluded"], *entry["licenseInfoInFiles"]]:
            faults.extend(f"{packed.name}: {name}: {fault}" for fault in license_faults(expression, licenses))
        linked = {packages[other]["name"] for one, kind, other in relations if (one, kind) == (entry["SPDXID"], "DYNAMIC_LINK") and other in packages}
        wanted = {own.get(soname) or owner_of(soname, packed.architecture) for soname in packed.needed.get(name, ())}
        expect(linked == wanted, f"{name} is linked to {linked}, not to {wanted}")
        origins = [packages[other]["name"] for one, kind, other in relations if (one, kind) == (entry["SPDXID"], "DESCENDANT_OF")]
        origin = [packed.carried[name]] if name in packed.carried else []
        expect(origins == origin, f"{name} is told to be from {origins}, not from {origin}")
    code = main["packageVerificationCode"]
    expect(code["packageVerificationCodeExcludedFiles"] == packed.unlisted, "the files that are not in the code")
    sums = sorted(hashlib.sha1(content).hexdigest() for content in packed.files.values())
    expect(code["packageVerificationCodeValue"] == hashlib.sha1("".join(sums).encode()).hexdigest(), "the code of all files")
    for entry in text["packages"]:
        if entry is not main and entry["supplier"] == "Organization: Debian":
            expect(entry["versionInfo"] in versions_of(entry["name"]), f"{entry['name']} is installed with another version")
        used = any(other == entry["SPDXID"] for _, _, other in relations)
        expect(used, f"{entry['name']} has nothing to do with the package")
    return faults


def first_file(text: dict[str, Any]) -> dict[str, Any]:
    entry: dict[str, Any] = text["files"][0]
    return entry


# Each of them is to be found, in the document of every package.
DAMAGES: dict[str, Callable[[dict[str, Any]], object]] = {
    "a file's sum": lambda text: first_file(text)["checksums"][1].update(checksumValue="0" * 64),
    "a file left out": lambda text: text["files"].pop(),
    "a file too many": lambda text: text["files"].append(first_file(text) | {"SPDXID": "SPDXRef-more", "fileName": "./more"}),
    "an identifier twice": lambda text: text["files"][1].update(SPDXID=first_file(text)["SPDXID"]),
    "a relation to nothing": lambda text: text["relationships"][0].update(relatedSpdxElement="SPDXRef-nothing"),
    "no version": lambda text: text["packages"][0].pop("versionInfo"),
    "another version": lambda text: text["packages"][0].update(versionInfo="0"),
    "no such licence": lambda text: text["packages"][0].update(licenseDeclared="Free"),
    "no namespace": lambda text: text.pop("documentNamespace"),
    "another code": lambda text: text["packages"][0]["packageVerificationCode"].update(packageVerificationCodeValue="0" * 40),
}


def main() -> None:
    arguments = sys.argv[1:]
    damaged = arguments[:1] == ["--damaged"]
    names = [Path(name) for name in arguments[damaged:] if "-dbgsym_" not in name]
    if not names:
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory() as work:
        packages = [Packed(name, Path(work, str(number))) for number, name in enumerate(names)]
    own = {}
    for packed in packages:
        for name in packed.needed.keys() - packed.carried.keys():
            if found := re.fullmatch(r"(lib[\w-]+\.so\.\d+)[\d.]*", name.rpartition("/")[2]):
                own[found[1]] = packed.name
    faults = [fault for packed in packages for fault in faults_of(packed.text, packed, own)]
    spaces = [packed.text["documentNamespace"] for packed in packages]
    if len(set(spaces)) != len(spaces):
        faults.append("two documents have one namespace")
    if damaged and not faults:
        for packed in packages:
            for kind, damage in DAMAGES.items():
                text = copy.deepcopy(packed.text)
                damage(text)
                if not faults_of(text, packed, own):
                    faults.append(f"{packed.name}: {kind} stays unseen")
            for kind in ("DYNAMIC_LINK", "DESCENDANT_OF"):
                related = [one for one in packed.text["relationships"] if one["relationshipType"] == kind]
                if related:
                    text = copy.deepcopy(packed.text)
                    text["relationships"].remove(related[-1])
                    if not faults_of(text, packed, own):
                        faults.append(f"{packed.name}: a {kind} left out stays unseen")
    if faults:
        sys.exit("\n".join(faults))
    print(f"{len(packages)} documents tell what {sum(len(packed.files) for packed in packages)} files are")


main()
