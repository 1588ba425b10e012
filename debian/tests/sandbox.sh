# Starts the sandbox for the test that reads this file, with the settings that lead to it. It ends
# with the test.

mkfifo "$AUTOPKGTEST_TMP/settings"
quillbay-sandbox --port 0 --data "$AUTOPKGTEST_TMP/sandbox" \
  >"$AUTOPKGTEST_TMP/settings" 2>"$AUTOPKGTEST_TMP/sandbox.log" &
sandbox=$!
trap 'kill "$sandbox"; wait "$sandbox"' EXIT
# It prints two, as soon as it answers.
{ read -r route && read -r authority; } <"$AUTOPKGTEST_TMP/settings"
eval "$route; $authority"

# comes_back FILE LINK: what the link leads to is the file.
comes_back() {
  curl --silent --show-error --fail --cacert "$QUILLBAY_CACERT" "$2" | cmp - "$1"
  echo "$2: byte for byte the same"
}
