# shellcheck shell=sh
# Sourced by the tests. $noisy: spoken words after 2 s of white noise at -45 dBFS.
cd "$AUTOPKGTEST_TMP" || exit
export HOME="$AUTOPKGTEST_TMP"
noisy=$AUTOPKGTEST_TMP/noisy.wav
sox /usr/share/sounds/alsa/Front_Center.wav speech.wav pad 2 0.5
sox -R speech.wav -p synth whitenoise vol 0.01 | sox -R -m -v 1 speech.wav -v 1 - -b 16 "$noisy"

# Fails unless $2, which $1 names, is the version of the packages.
expect_version() {
    echo "$1: version $2"
    [ "$2" = "$(dpkg-query --show --showformat '${source:Upstream-Version}' libaudio-filter0)" ]
}

# The level of the noise before the words, in dBFS.
noise_level() {
    sox "$1" -n trim 1 0.8 stats 2>&1 | awk '/^RMS lev dB/ { print $4 }'
}

# Fails unless the file is as long as $noisy, its noise at least 10 dB lower.
expect_clean() {
    echo "$1: noise $(noise_level "$noisy") -> $(noise_level "$1") dBFS, $(soxi -s "$1") of $(soxi -s "$noisy") frames"
    [ "$(soxi -s "$1")" -eq "$(soxi -s "$noisy")" ]
    awk "BEGIN { exit !($(noise_level "$noisy") - $(noise_level "$1") >= 10) }"
}
