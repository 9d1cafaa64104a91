# The window: what lies where, the panels' side, its size and place, its title, and how it is closed.
#
# Owns: nothing
# Offers: build, quit
# Calls: axes, documents, mouse, notices, options, panels, playback, scene, settings, status, theme, toolbar, tree, view

namespace eval viewer::window {
    namespace export build quit
    namespace ensemble create
    namespace import ::viewer::theme::px
    variable SIDE_WIDTH 270     ;# of the panels, in pixels at scale 1
    viewer::scene listen viewer::window::show_title
    viewer::settings listen side viewer::window::side_changed
    viewer::settings listen scale viewer::window::scale_changed
}

# ---- building ------------------------------------------------------------------------------------------------------

proc viewer::window::build {} {
    variable SIDE_WIDTH
    viewer::theme apply [viewer::settings get scale]
    wm title . pelt
    # With large letters on a small screen the window still fits.
    wm minsize . [expr {min([px 640], [winfo screenwidth .] - 40)}] [expr {min([px 400], [winfo screenheight .] - 80)}]
    viewer::toolbar build
    viewer::notices build
    ttk::panedwindow .panes -orient horizontal
    # The frame belongs to the library: without a background of its own nothing flickers beneath the picture.
    frame .view -width [viewer::options get width] -height [viewer::options get height] -background {}
    set width [viewer::settings get side_width]
    set side [px [expr {$width > 0 ? $width : $SIDE_WIDTH}]]
    ttk::frame .side -width [expr {min($side, [winfo screenwidth .] / 2)}]
    viewer::panels build
    .panes add .view -weight 1
    # The side keeps the width that it was given, whatever its widgets would like.
    pack propagate .side 0
    if {[viewer::settings get side]} show_side
    viewer::playback build
    viewer::status build
    viewer::axes build
    grid .tools -row 0 -column 0 -sticky ew
    grid .panes -row 2 -column 0 -sticky nsew
    grid .bar -row 4 -column 0 -sticky ew
    grid rowconfigure . 2 -weight 1
    grid columnconfigure . 0 -weight 1
    viewer::mouse bind_wheel .view
    bind .view <Button> {viewer::view take_keyboard}
    bind . <Configure> {if {"%W" eq "."} viewer::window::note_geometry}
    wm protocol . WM_DELETE_WINDOW {viewer::window quit}
    place_window
}

# Where it was, or as large as suits the screen.
proc viewer::window::place_window {} {
    set screen_width [winfo screenwidth .]
    set screen_height [winfo screenheight .]
    if {[viewer::options given size]} return
    if {[regexp {^(\d+)x(\d+)(?:\+(-?\d+)\+(-?\d+))?$} [viewer::settings get geometry] -> width height x y]} {
        # The menu lies outside of what Tk calls the height.
        set width [expr {min([px $width], $screen_width)}]
        set height [expr {min([px $height], $screen_height - [px 40])}]
        wm geometry . ${width}x$height
        # A place is taken only if the window can be reached there.
        if {$x ne {} && $x >= 0 && $y >= 0 && $x < $screen_width - 100 && $y < $screen_height - 100} {
            wm geometry . +$x+$y
        }
        return
    }
    wm geometry . [expr {min([px 1280], $screen_width - 40)}]x[expr {min([px 800], $screen_height - 80)}]
}

proc viewer::window::note_geometry {} {
    if {[viewer::options given size] || ![winfo viewable .]} return
    regexp {^(\d+)x(\d+)(.*)$} [wm geometry .] -> width height place
    viewer::settings keep geometry [viewer::theme points $width]x[viewer::theme points $height]$place
}

# What is in the scene. A new one begins with its first model selected.
proc viewer::window::show_title {is_new} {
    set names {}
    if {[viewer::scene list_file] ne {}} { lappend names [file tail [viewer::scene list_file]] }
    foreach model [viewer::scene models] {
        if {[dict get $model row] == 0} { lappend names [file tail [dict get $model file]] }
    }
    wm title . [expr {[llength $names] > 0 ? "[join [lrange $names 0 2] {, }] - pelt" : "pelt"}]
}

# Another size of letters while the program runs. Menus and rows take their sizes from the fonts.
proc viewer::window::scale_changed {} {
    set before [viewer::theme scale]
    viewer::theme apply [viewer::settings get scale]
    # The panels need more room for larger letters, but never most of the window.
    if {".side" in [.panes panes]} {
        set width [expr {round([winfo width .side] * [viewer::theme scale] / $before)}]
        .panes sashpos 0 [expr {min($width, [winfo width .panes] / 2)}]
    }
    viewer::toolbar arrange_anew
    viewer::axes show
    viewer::view draw_soon
}

# ---- the panels' place ---------------------------------------------------------------------------------------------

proc viewer::window::side_changed {} {
    if {[viewer::settings get side]} show_side else hide_side
}

proc viewer::window::show_side {} {
    if {".side" in [.panes panes]} return
    .panes insert 0 .side -weight 0
    raise .side .panes
    raise .view .panes
    viewer::tree refresh
}

proc viewer::window::hide_side {} {
    if {".side" in [.panes panes]} {
        viewer::settings keep side_width [viewer::theme points [winfo width .side]]
        .side configure -width [winfo width .side]
        .panes forget .side
    }
}

# ---- the end -------------------------------------------------------------------------------------------------------

proc viewer::window::quit {} {
    if {![viewer::documents may_lose Quit]} return
    if {".side" in [.panes panes]} { viewer::settings keep side_width [viewer::theme points [winfo width .side]] }
    destroy .
}
