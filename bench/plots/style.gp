# Shared by the plots.
set datafile separator "\t"
set encoding utf8
ink = "#24292f"
faint = "#d0d7de"
within = "#2f7f79"
beyond = "#c8553d"
limit = "#8c6d1f"
set border 3 lc rgb faint lw 1
set tics nomirror scale 0 textcolor rgb ink
set grid lc rgb faint lw 0.5 lt 1
