#!/bin/sh
# Takes a signature on the pad, puts it after the words "Signature:" of contract.pdf, and seals the document.
set -e

# A certificate to try it with. A real one comes from your certificate authority, as a file like counter.p12.
umask 077
openssl rand -hex 16 >counter.password
openssl req -x509 -newkey rsa:3072 -nodes -days 365 -subj "/CN=Counter 3" -keyout counter.key -out counter.pem 2>/dev/null
openssl pkcs12 -export -inkey counter.key -in counter.pem -passout file:counter.password -out counter.p12
rm counter.key

scribera-sign contract.pdf -o signed.pdf --after "Signature:" --pad K210 --timeout 60 --show date \
    --certificate counter.p12 --password-file counter.password --reason "Current account agreement"
scribera-sign verify signed.pdf --trust counter.pem
