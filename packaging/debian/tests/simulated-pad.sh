# Sourced by the tests: the current directory is one of their own, in which a simulated pad signs and confirms.
set -eu
cd "$AUTOPKGTEST_TMP"
driver=$(dpkg-query -L scribera-tools | grep '/scribera/libscriberadrv\.so$')
recordings=/usr/share/scribera/recordings
samples=/usr/share/doc/libscriberasdk-dev/examples/samples
ln -s "$driver" .
mkdir -m 700 runtime
export HOME="$AUTOPKGTEST_TMP" XDG_RUNTIME_DIR="$AUTOPKGTEST_TMP/runtime" QT_QPA_PLATFORM=offscreen
export SCRIBERA_SIM_RECORDING=$recordings/initials.rec SCRIBERA_SIM_RATE=20 SCRIBERA_SIM_KEY=confirm

# begins FILE TEXT: the file begins with the text, as files of its kind do.
begins() {
    [ "$(head -c "${#2}" "$1" | tr -d '\0')" = "$2" ] || { echo "$1 is not what it should be" >&2; exit 1; }
}
