# Whole stills through the free codec: time and memory over the size of the picture.
# Arguments: the folder of this file, the folder of the figures, the picture.
load ARG1."/style.gp"
file = ARG2."/scaling.tsv"
set output ARG3

set terminal pngcairo size 900,360 font "DejaVu Sans,10" background rgb "white"
set multiplot layout 1,2
set xlabel "megapixels" textcolor rgb ink
set xrange [0:*]
set yrange [0:*]
set format y "%g"
set key bottom right textcolor rgb ink samplen 2

set title "Time of a whole still, encoding left out" textcolor rgb ink font ",12"
set ylabel "milliseconds" textcolor rgb ink
plot file using 1:3 skip 1 with lines lw 2 dt 2 lc rgb limit title "budget", \
     file using 1:2 skip 1 with linespoints lw 2 pt 7 ps 1 lc rgb within title "measured"

set title "Peak memory beside the frame" textcolor rgb ink font ",12"
set ylabel "MiB" textcolor rgb ink
unset key
plot file using 1:4 skip 1 with linespoints lw 2 pt 7 ps 1 lc rgb within
unset multiplot
