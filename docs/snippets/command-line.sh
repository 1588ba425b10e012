# [share]
quillbay share --title 'Holiday' --expires 7d video.mp4 photos.zip
# [share]

# [pipe]
quillbay share report.pdf | while read -r link; do notify-send "Uploading to $link"; done
# [pipe]

# An upload that is killed once its link is there.
truncate --size 128M film.mkv
coproc share { exec quillbay share film.mkv; }
pid=$share_PID
read -r _ <&"${share[0]}"
kill -KILL "$pid"
wait "$pid" || true

# [history]
quillbay list             # what was shared, and its state
quillbay resume --last    # uploads what is left of an unfinished share
quillbay delete --last    # the link stops working
# [history]
