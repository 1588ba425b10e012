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

fetch() { curl --silent --show-error --fail --cacert "$QUILLBAY_CACERT" "$1"; }

# leads_to FILE LINK: the page of the link offers the file.
leads_to() {
  path=$(fetch "$2" | sed -nE 's|.*href="([^"]*/files/[^"]*)".*|\1|p')
  fetch "${2%%/s/*}$path" | cmp - "$1"
  echo "$2: byte for byte the same"
}
