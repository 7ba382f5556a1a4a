# Each row's share of its budget, as bars; rows that use more than all of it are cut at the right edge.
# Arguments: the folder of this file, the folder of the figures, the picture.
load ARG1."/style.gp"
file = ARG2."/ratios.tsv"
set output ARG3
stats file using 2 skip 1 nooutput
rows = STATS_records
widest = 1.5

set terminal pngcairo size 700,20*rows+90 font "DejaVu Sans,9" background rgb "white"
set title "Measured against its bound, as a share of the budget" textcolor rgb ink font ",11" offset 0,-0.3
set lmargin 18
set rmargin 18
set xrange [0:widest]
set yrange [rows-0.3:-0.7]
set xtics ("0" 0, "half" 0.5, "budget" 1) format "%g"
unset grid
set grid xtics
set ytics ()
set style fill solid 1 noborder
set arrow 1 from 1,-0.7 to 1,rows-0.3 nohead lc rgb limit lw 2 front
unset key

cut(ratio, budget) = ratio/budget < widest ? ratio/budget : widest
shade(ratio, budget) = ratio <= budget ? 0x2f7f79 : 0xc8553d
text(ratio, budget) = sprintf("%.2f of %.3g", ratio, budget)

plot file using (cut($2,$3)/2):0:(cut($2,$3)/2):(0.34):(shade($2,$3)):ytic(1) skip 1 with boxxyerror lc rgb variable, \
     file using (widest):0:(text($2,$3)) skip 1 with labels left offset 1,0 textcolor rgb ink
