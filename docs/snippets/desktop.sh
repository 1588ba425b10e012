# [window]
scripts/demo --desktop              # the window against the local sandbox
quillbay-desktop video.mp4 *.jpg    # or drop files on it
# [window]

# [nautilus]
mkdir -p ~/.local/share/nautilus/scripts
ln -s /usr/local/share/quillbay-desktop/nautilus-scripts/* ~/.local/share/nautilus/scripts/
# [nautilus]
