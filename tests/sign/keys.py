"""Certificates and keys, made anew for each run: nothing that could be taken for somebody's is in the tree."""

from __future__ import annotations

from pathlib import Path

from checks import run

CURVES = {"ec": "P-256", "ec384": "P-384", "ec521": "P-521"}


class Keys:
    """A root, and below it what a test asks for by name, as PKCS#12 files whose password is in a file."""

    password = "seal it"

    def __init__(self, folder: Path) -> None:
        self.folder = folder
        self.password_file = folder / "password"
        self.password_file.write_text(self.password + "\n")
        self.authority = self.make_root("root")
        self.stranger = self.make_root("stranger")

    def openssl(self, *arguments: str | Path) -> None:
        done = run("openssl", *arguments, cwd=self.folder)
        assert done.returncode == 0, done.stderr

    def key(self, name: str, kind: str) -> Path:
        path = self.folder / f"{name}.key"
        if not path.exists():
            how = ["RSA", "-pkeyopt", f"rsa_keygen_bits:{kind[3:] or 2048}"] if kind.startswith("rsa") else [
                "EC", "-pkeyopt", f"ec_paramgen_curve:{CURVES[kind]}"]
            self.openssl("genpkey", "-algorithm", *how, "-out", path)
        return path

    def make_root(self, name: str) -> Path:
        path = self.folder / f"{name}.pem"
        self.openssl("req", "-x509", "-new", "-key", self.key(name, "rsa"), "-subj", f"/CN=Test {name}", "-days", "30",
                     "-out", path)
        return path

    def certificate(self, name: str, kind: str, *, subject: str = "", usage: str = "digitalSignature", start: str = "",
                    end: str = "") -> Path:
        """Of an own key, below the root."""
        path = self.folder / f"{name}.pem"
        if path.exists():
            return path
        request, extensions = self.folder / f"{name}.csr", self.folder / f"{name}.ext"
        extensions.write_text(f"keyUsage=critical,{usage}\nbasicConstraints=CA:FALSE\n")
        self.openssl("req", "-new", "-utf8", "-key", self.key(name, kind), "-subj", subject or f"/CN=Signer {name}/O=Test",
                     "-out", request)
        if start or end:
            database = self.folder / f"{name}-ca"
            database.mkdir()
            (database / "index.txt").touch()
            (database / "ca.cnf").write_text(
                "[ca]\ndefault_ca=own\n[own]\ndatabase=$ENV::DATABASE/index.txt\nnew_certs_dir=$ENV::DATABASE\n"
                "rand_serial=yes\ndefault_md=sha256\npolicy=any\n[any]\ncommonName=supplied\n")
            done = run("openssl", "ca", "-batch", "-config", database / "ca.cnf", "-in", request, "-out", path, "-cert",
                       self.authority, "-keyfile", self.folder / "root.key", "-startdate", start, "-enddate", end,
                       "-extfile", extensions, "-notext", env={"DATABASE": str(database), "PATH": "/usr/bin:/bin"})
            assert done.returncode == 0, done.stderr
        else:
            self.openssl("x509", "-req", "-in", request, "-CA", self.authority, "-CAkey", self.folder / "root.key",
                         "-days", "20", "-extfile", extensions, "-out", path)
        return path

    def p12(self, kind: str, name: str = "", password: str | None = None, **how: str) -> Path:
        name = name or kind
        path = self.folder / f"{name}.p12"
        if not path.exists():
            certificate = self.certificate(name, kind, **how)
            self.openssl("pkcs12", "-export", "-inkey", self.key(name, kind), "-in", certificate, "-certfile",
                         self.authority, "-out", path, "-passout", f"pass:{self.password if password is None else password}")
        return path

    def escrow(self, kind: str) -> tuple[Path, Path]:
        """The certificate that ink is sealed to, and its key."""
        name = f"escrow-{kind}"
        usage = "keyEncipherment" if kind.startswith("rsa") else "keyAgreement"
        return self.certificate(name, kind, usage=usage), self.key(name, kind)
