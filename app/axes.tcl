# The axes mark and the scale: a small canvas in the lower left corner of the view, which turns with it.
#
# Owns: drawn, pointer
# Offers: build, show
# Calls: mouse, scene, settings, theme, view

namespace eval viewer::axes {
    namespace export build show
    namespace ensemble create
    namespace import ::viewer::theme::px
    variable drawn {}           ;# what the canvas shows
    variable pointer {0 0}      ;# where a drag that began on the mark is
    variable SIZE 104           ;# pixels at scale 1
    variable AXES {x #e0716c y #86c06c z #6ca6e8}
    viewer::view listen viewer::axes::follow
    viewer::settings listen axes viewer::axes::show
}

proc viewer::axes::build {} {
    canvas .axes -highlightthickness 0 -borderwidth 0
    # The mouse goes through to the view, which does not hear of it by itself.
    foreach button {1 2 3} {
        bind .axes <Button-$button> { viewer::axes::pressed %b %X %Y }
        bind .axes <B$button-Motion> [list viewer::axes::dragged $button %X %Y]
        bind .axes <ButtonRelease-$button> { viewer::mouse happened 0 0 0 0 0 }
    }
    viewer::mouse bind_wheel .axes
    show
}

proc viewer::axes::pressed {button x y} {
    variable pointer
    set pointer [list $x $y]
    viewer::mouse happened $button 0 0 0 0
}

proc viewer::axes::dragged {button x y} {
    variable pointer
    lassign $pointer old_x old_y
    set pointer [list $x $y]
    viewer::mouse happened $button 0 0 [expr {$x - $old_x}] [expr {$y - $old_y}]
}

# Puts the mark into the corner, for the chosen size of text, or takes it away.
proc viewer::axes::show {} {
    variable drawn
    variable SIZE
    set drawn {}
    .axes configure -width [px $SIZE] -height [expr {[px $SIZE] + [px 30]}]
    if {[viewer::settings get axes]} {
        place .axes -in .view -relx 0 -rely 1 -x 2 -y -2 -anchor sw
        raise .axes
        follow
    } else {
        place forget .axes
    }
}

# Draws the mark anew if the view was turned or zoomed.
proc viewer::axes::follow {} {
    variable drawn
    if {![viewer::settings get axes] || ![winfo exists .axes]} return
    set view [sorvel scene view]
    set matrix [dict get $view matrix]
    set per_pixel [dict get $view unit]
    # Nothing has no size.
    set size [expr {[llength [viewer::scene models]] > 0 ? [viewer::scene size] : {}}]
    set state [list $matrix $per_pixel [viewer::view background] $size]
    if {$state eq $drawn} return
    set drawn $state
    lassign [viewer::view background] red green blue
    set paper [format #%02x%02x%02x {*}[lmap part [list $red $green $blue] { expr {round($part * 255)} }]]
    set ink [expr {0.3 * $red + 0.6 * $green + 0.1 * $blue > 0.5 ? "#303030" : "#b8c0ca"}]
    .axes configure -background $paper
    .axes delete all
    draw_mark $matrix
    if {$size ne {}} { draw_scale_bar $per_pixel $size $ink }
}

# The farthest axis first. A row of the matrix is a direction of the screen, a column an axis of the scene.
proc viewer::axes::draw_mark {matrix} {
    variable AXES
    variable SIZE
    set middle [expr {[px $SIZE] / 2.0}]
    set length [expr {$middle * 0.62}]
    set lines {}
    foreach {name colour} $AXES index {0 1 2} {
        lappend lines [list [lindex $matrix [expr {8 + $index}]] $name $colour \
            [lindex $matrix $index] [lindex $matrix [expr {4 + $index}]]]
    }
    foreach line [lsort -real -index 0 $lines] {
        lassign $line depth name colour right up
        set x [expr {$middle + $right * $length}]
        set y [expr {$middle - $up * $length}]
        .axes create line $middle $middle $x $y -fill $colour -width [px 2] -capstyle round -tags $name
        .axes create text [expr {$middle + $right * $length * 1.28}] [expr {$middle - $up * $length * 1.28}] \
            -text [string toupper $name] -fill $colour -font ViewerBold
    }
}

# A bar of a round number of units, and the largest extent of the scene.
proc viewer::axes::draw_scale_bar {per_pixel size ink} {
    variable SIZE
    if {$per_pixel <= 0 || $per_pixel > 1e9} return
    set most [expr {$per_pixel * [px $SIZE] * 0.8}]
    set unit [expr {pow(10, floor(log10($most)))}]
    foreach factor {5 2 1} {
        if {$unit * $factor <= $most} break
    }
    set width [expr {$unit * $factor / $per_pixel}]
    set left [px 10]
    set y [expr {[px $SIZE] + [px 4]}]
    .axes create line $left $y [expr {$left + $width}] $y -fill $ink -width [px 1]
    foreach x [list $left [expr {$left + $width}]] {
        .axes create line $x [expr {$y - [px 3]}] $x [expr {$y + [px 3]}] -fill $ink
    }
    .axes create text $left [expr {$y + [px 6]}] -anchor nw -fill $ink -font TkSmallCaptionFont \
        -text "[format %g [expr {$unit * $factor}]] of [format %.4g $size]"
}
