# A window of just the size of the pictures, for a run that nobody watches.
#
# Owns: nothing
# Offers: build, resize
# Calls: display, options, view

namespace eval viewer::stage {
    namespace export build resize
    namespace ensemble create
    variable MARGIN 2    ;# the view's border, which a picture leaves out
}

# No window manager gets to change it.
proc viewer::stage::build {} {
    wm overrideredirect . 1
    wm geometry . +0+0
    frame .view -background {}
    pack .view
    resize [viewer::options get width] [viewer::options get height]
    viewer::view create [split [viewer::options get background] ,]
    viewer::display apply_options
}

proc viewer::stage::resize {width height} {
    variable MARGIN
    .view configure -width [expr {($width + 3) / 4 * 4 + $MARGIN}] -height [expr {($height + 3) / 4 * 4 + $MARGIN}]
    update
}
