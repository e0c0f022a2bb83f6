# The photograph beside its approximations, as `lumo svd` wrote them to this folder. JPEG, for its
# size: these are for looking at.
set terminal jpeg size 1000,192 font "sans,12"
set output "ranks.jpeg"
set multiplot layout 1,4 margins 0.003,0.997,0,0.88 spacing 0.006,0
set size ratio -1
unset border
unset tics
unset key
set autoscale fix
do for [k in "5 20 50"] {
    set title "rank " . k
    plot "chelsea.k" . k . ".png" binary filetype=png with rgbimage
}
set title "photograph (rank 300)"
plot photograph binary filetype=png with rgbimage
