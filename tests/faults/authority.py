# SPDX-License-Identifier: MIT

"""A certificate authority made with openssl, which also makes the certificates that must be refused."""

import subprocess

EXTENSIONS = """basicConstraints=critical,CA:FALSE
subjectAltName={names}
extendedKeyUsage={usage}
"""
AUTHORITY_EXTENSIONS = "basicConstraints=critical,CA:TRUE\nkeyUsage=critical,keyCertSign,cRLSign\n"
LOCALHOST = "DNS:localhost,IP:127.0.0.1,IP:::1"


def openssl(*arguments):
    subprocess.run(["openssl", *map(str, arguments)], check=True, capture_output=True)


class Authority:
    """An authority in a folder. `root` is the file that the application trusts."""

    def __init__(self, folder):
        self._folder = folder
        folder.mkdir(exist_ok=True)
        self.root = folder / "root.pem"
        self._root_key = folder / "root.key"
        self._make_key(self._root_key)
        openssl("req", "-x509", "-key", self._root_key, "-days", "2", "-subj", "/CN=Root of the tests",
                "-out", self.root)

    def _make_key(self, path, kind="ec"):
        if kind == "ec":
            openssl("ecparam", "-name", "prime256v1", "-genkey", "-noout", "-out", path)
        else:
            openssl("genrsa", "-out", path, kind)

    def certificate(self, name, names=LOCALHOST, usage="serverAuth", subject="localhost", kind="ec",
                    digest="sha256", dates=("-days", "2"), issuer=None, is_authority=False):
        """Makes a key and a certificate; returns their files. `dates` is a part of a command line,
        `issuer` another pair of files. The file of the certificate holds nothing else."""
        key, request, certificate = (self._folder / f"{name}.{end}" for end in ("key", "csr", "pem"))
        issuer_key, issuer_certificate = issuer or (self._root_key, self.root)
        self._make_key(key, kind)
        openssl("req", "-new", "-key", key, "-subj", f"/CN={subject}", "-out", request)
        extensions = self._folder / f"{name}.ext"
        text = AUTHORITY_EXTENSIONS if is_authority else EXTENSIONS.format(names=names, usage=usage)
        if not names:
            text = "\n".join(line for line in text.splitlines() if "subjectAltName" not in line)
        extensions.write_text(text)
        openssl("x509", "-req", "-in", request, "-CA", issuer_certificate, "-CAkey", issuer_key,
                "-CAcreateserial", f"-{digest}", *dates, "-extfile", extensions, "-out", certificate)
        return key, certificate

    def dated_certificate(self, name, begin, end):
        """As certificate(), valid from `begin` to `end`, both as YYYYMMDDHHMMSSZ."""
        key, request, certificate = (self._folder / f"{name}.{end}" for end in ("key", "csr", "pem"))
        self._make_key(key)
        openssl("req", "-new", "-key", key, "-subj", "/CN=localhost", "-out", request)
        (self._folder / "index").write_text("")
        config = self._folder / "ca.conf"
        config.write_text(
            f"[ca]\ndefault_ca=c\n[c]\ndatabase={self._folder}/index\nnew_certs_dir={self._folder}\n"
            "default_md=sha256\npolicy=p\nrand_serial=yes\nunique_subject=no\nx509_extensions=e\n"
            f"[p]\ncommonName=supplied\n[e]\nsubjectAltName={LOCALHOST}\n")
        openssl("ca", "-batch", "-config", config, "-in", request, "-out", certificate, "-notext",
                "-keyfile", self._root_key, "-cert", self.root, "-startdate", begin, "-enddate", end)
        return key, certificate

    def chain(self, name, *certificates):
        """A file with several certificates."""
        path = self._folder / f"{name}-chain.pem"
        path.write_text("".join(certificate.read_text() for certificate in certificates))
        return path
