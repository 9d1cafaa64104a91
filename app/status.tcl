# The status line below the view: the latest word, the time, the triangles of the picture.
#
# Owns: message, time_text, triangle_text, timer
# Offers: build, say, message, show_time
# Calls: theme, timeline, view

namespace eval viewer::status {
    namespace export build say message show_time
    namespace ensemble create
    namespace import ::viewer::theme::px
    variable message {}          ;# the latest word
    variable time_text {}
    variable triangle_text {}
    variable timer {}            ;# of the numbers, which follow the pictures a moment later
    viewer::view listen viewer::status::picture_drawn
}

proc viewer::status::build {} {
    ttk::frame .bar -padding [list [px 8] [px 3]]
    ttk::label .status -textvariable ::viewer::status::message -anchor w
    ttk::label .bar.time -textvariable ::viewer::status::time_text -style Dim.TLabel -anchor e
    ttk::label .bar.triangles -textvariable ::viewer::status::triangle_text -style Dim.TLabel -anchor e
    pack .bar.triangles .bar.time -side right -padx [list [px 16] 0]
    pack .status -in .bar -side left -fill x -expand 1
    say "Drag turns \u00b7 right drag shifts \u00b7 wheel zooms \u00b7 double click centres"
}

proc viewer::status::say {text} {
    variable message
    set message $text
}

proc viewer::status::message {} {
    variable message
    return $message
}

proc viewer::status::show_time {} {
    variable time_text
    set end [viewer::timeline end]
    set time_text [expr {$end > 0 ? [format "%.2f of %.2f s" [viewer::timeline now] $end] : {}}]
}

proc viewer::status::picture_drawn {} {
    variable timer
    if {$timer eq {}} { set timer [after 150 viewer::status::refresh] }
}

proc viewer::status::refresh {} {
    variable timer
    variable triangle_text
    set timer {}
    if {![viewer::view lives]} return
    set triangle_text "[sorvel scene triangles] triangles"
    show_time
}
