# The window: toolbar, notices, panels beside the view, player, status line; how it starts and ends.

namespace eval viewer {
    variable time_text {}
    variable triangle_text {}
    variable status_timer {}
    variable SIDE_WIDTH 270     ;# of the panels, in pixels at scale 1
    variable tool_order {}      ;# names of the buttons of the toolbar and the gaps between them
    variable tools_shown -1     ;# how many of them are in the bar
}

proc viewer::run_window {files} {
    variable setting
    variable option
    variable scene_list
    variable settings_word
    read_settings
    take_settings
    build_window
    build_menus
    bind_keys
    bind_fields
    create_view
    create_cursors
    apply_display
    apply_shown
    read_flags
    after idle viewer::after_frame
    if {$option(animate) ne {}} {
        open_one open $option(animate)
    } else {
        open_files $files
    }
    if {$scene_list ne {}} start_playing
    watch_tick
    if {$settings_word ne {}} { tell_notice $settings_word "The settings were damaged" }
}

# What was kept, where the command line says nothing else.
proc viewer::take_settings {} {
    variable setting
    variable option
    variable given
    foreach {name variable} {side shows_side axes shows_axes watch watches loop loops scale chosen_scale
        mode mouse_mode free free rate anim_rate} {
        set ::viewer::$variable $setting($name)
    }
    if {!$given(background)} { set option(background) [join $setting(background) ,] }
    apply_theme [expr {$setting(scale) == 0 ? [automatic_scale] : $setting(scale)}]
}

# The flags that were kept; those of the command line come first and stay.
proc viewer::apply_shown {} {
    variable setting
    variable option
    variable given
    set told [lmap value $option(display) { lindex [split $value =] 0 }]
    foreach {name on} $setting(display) {
        if {$name ni $told && $name ne "smooth"} { sorvel display $name $on }
    }
    if {!$given(lod) && $setting(lod) ne {}} { sorvel display lod $setting(lod) }
}

# ---- building ------------------------------------------------------------------------------------------------------

proc viewer::build_window {} {
    variable option
    variable given
    variable setting
    variable shows_side
    variable SIDE_WIDTH
    wm title . pelt
    # With large letters on a small screen the window still fits.
    wm minsize . [expr {min([px 640], [winfo screenwidth .] - 40)}] [expr {min([px 400], [winfo screenheight .] - 80)}]
    build_toolbar
    build_notice
    ttk::panedwindow .panes -orient horizontal
    # The frame belongs to the library: without a background of its own nothing flickers beneath the picture.
    frame .view -width $option(width) -height $option(height) -background {}
    set side [px [expr {$setting(side_width) > 0 ? $setting(side_width) : $SIDE_WIDTH}]]
    ttk::frame .side -width [expr {min($side, [winfo screenwidth .] / 2)}]
    build_panels
    .panes add .view -weight 1
    # The side keeps the width that it was given, whatever its widgets would like.
    pack propagate .side 0
    if {$shows_side} show_side
    build_player
    build_status
    build_axes
    grid .tools -row 0 -column 0 -sticky ew
    grid .panes -row 2 -column 0 -sticky nsew
    grid .bar -row 4 -column 0 -sticky ew
    grid rowconfigure . 2 -weight 1
    grid columnconfigure . 0 -weight 1
    bind_wheel .view
    bind .view <Button> viewer::focus_view
    bind .view <Destroy> viewer::leave
    bind . <Configure> {if {"%W" eq "."} viewer::note_geometry}
    wm protocol . WM_DELETE_WINDOW viewer::quit
    place_window
    update
}

# Where it was, or as large as suits the screen.
proc viewer::place_window {} {
    variable setting
    variable given
    variable option
    set screen_width [winfo screenwidth .]
    set screen_height [winfo screenheight .]
    if {$given(size)} return
    if {[regexp {^(\d+)x(\d+)(?:\+(-?\d+)\+(-?\d+))?$} $setting(geometry) -> width height x y]} {
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

proc viewer::note_geometry {} {
    variable given
    if {$given(size) || ![winfo viewable .]} return
    regexp {^(\d+)x(\d+)(.*)$} [wm geometry .] -> width height place
    keep geometry [points $width]x[points $height]$place
}

# The buttons stand in the order in which they go into the menu at the end where the window is too narrow for them.
proc viewer::build_toolbar {} {
    variable tool_order
    ttk::frame .tools -padding [list [px 6] [px 3]]
    # First, so that these two never go.
    ttk::checkbutton .tools.side -text Panels -style Toolbutton -variable ::viewer::shows_side \
        -command viewer::side_changed -takefocus 0
    pack .tools.side -side right
    ttk::menubutton .tools.more -text More -menu .tools.more.menu -takefocus 0
    menu .tools.more.menu
    set tool_order {}
    foreach {mode text} {turn Turn pan Shift zoom Zoom} {
        ttk::radiobutton .tools.$mode -text $text -style Toolbutton -value $mode -variable ::viewer::mouse_mode \
            -command viewer::mode_changed -takefocus 0
        lappend tool_order $mode
    }
    tool_gap 1
    foreach {view text} {north North south South east East west West down Above up Below} {
        ttk::button .tools.$view -text $text -style Toolbutton -command [list viewer::look $view] -takefocus 0
        lappend tool_order $view
    }
    tool_gap 2
    ttk::button .tools.fit -text Fit -style Toolbutton -command viewer::fit -takefocus 0
    lappend tool_order fit
    tool_gap 3
    foreach {name text} {wireframe Wireframe textures Textures lighting Light} {
        ttk::checkbutton .tools.$name -text $text -style Toolbutton -variable ::viewer::flag($name) \
            -command [list viewer::show_flag $name] -takefocus 0
        lappend tool_order $name
    }
    bind .tools <Configure> viewer::arrange_tools
    arrange_tools
}

proc viewer::tool_gap {number} {
    variable tool_order
    ttk::separator .tools.gap$number -orient vertical
    lappend tool_order gap$number
}

# Puts as many buttons into the bar as there is room for, and the others into the menu.
proc viewer::arrange_tools {} {
    variable tool_order
    variable tools_shown
    set room [expr {[winfo width .tools] - [winfo reqwidth .tools.side] - 2 * [px 6]}]
    set wanted 0
    foreach name $tool_order { incr wanted [tool_width $name] }
    set count [llength $tool_order]
    # Before the window is on the screen nothing has a width.
    if {[winfo width .tools] > 1 && $wanted > $room} {
        set wanted [winfo reqwidth .tools.more]
        set count 0
        foreach name $tool_order {
            incr wanted [tool_width $name]
            if {$wanted > $room} break
            incr count
        }
    }
    if {$count eq $tools_shown} return
    set tools_shown $count
    pack forget .tools.more {*}[lmap name $tool_order { string cat .tools. $name }]
    foreach name [lrange $tool_order 0 $count-1] {
        if {[string match gap* $name]} {
            pack .tools.$name -side left -fill y -padx [px 6] -pady [px 3]
        } else {
            pack .tools.$name -side left
        }
    }
    if {$count == [llength $tool_order]} return
    pack .tools.more -side right
    fill_more_tools [lrange $tool_order $count end]
}

proc viewer::tool_width {name} {
    return [expr {[winfo reqwidth .tools.$name] + ([string match gap* $name] ? 2 * [px 6] : 0)}]
}

proc viewer::fill_more_tools {names} {
    .tools.more.menu delete 0 end
    foreach name $names {
        if {[string match gap* $name]} {
            .tools.more.menu add separator
            continue
        }
        set options [list -label [.tools.$name cget -text] -command [.tools.$name cget -command]]
        switch [winfo class .tools.$name] {
            TButton { .tools.more.menu add command {*}$options }
            TCheckbutton { .tools.more.menu add checkbutton {*}$options -variable [.tools.$name cget -variable] }
            TRadiobutton {
                .tools.more.menu add radiobutton {*}$options -variable [.tools.$name cget -variable] \
                    -value [.tools.$name cget -value]
            }
        }
    }
}

proc viewer::build_status {} {
    ttk::frame .bar -padding [list [px 8] [px 3]]
    ttk::label .status -textvariable ::viewer::message -anchor w
    ttk::label .bar.time -textvariable ::viewer::time_text -style Dim.TLabel -anchor e
    ttk::label .bar.triangles -textvariable ::viewer::triangle_text -style Dim.TLabel -anchor e
    pack .bar.triangles .bar.time -side right -padx [list [px 16] 0]
    pack .status -in .bar -side left -fill x -expand 1
    say_status "Drag turns \u00b7 right drag shifts \u00b7 wheel zooms \u00b7 double click centres"
}

# ---- the panels' place ---------------------------------------------------------------------------------------------

proc viewer::side_changed {} {
    variable shows_side
    keep side $shows_side
    if {$shows_side} show_side else hide_side
}

proc viewer::show_side {} {
    if {".side" in [.panes panes]} return
    .panes insert 0 .side -weight 0
    raise .side .panes
    raise .view .panes
    refresh_panels
}

proc viewer::hide_side {} {
    if {".side" in [.panes panes]} {
        keep side_width [points [winfo width .side]]
        .side configure -width [winfo width .side]
        .panes forget .side
    }
}

# ---- after each picture --------------------------------------------------------------------------------------------

# Called after each frame: the axes turn with it, and the numbers of the status line follow a moment later.
proc viewer::after_frame {} {
    variable frame_hook
    variable status_timer
    set frame_hook viewer::after_frame
    update_axes
    if {$status_timer eq {}} { set status_timer [after 150 viewer::refresh_status] }
}

proc viewer::refresh_status {} {
    variable status_timer
    variable triangle_text
    set status_timer {}
    if {![view_lives]} return
    set triangle_text "[sorvel scene triangles] triangles"
    show_time
}

proc viewer::show_time {} {
    variable anim_time
    variable anim_end
    variable time_text
    set time_text [expr {$anim_end > 0 ? [format "%.2f of %.2f s" $anim_time $anim_end] : {}}]
}

# ---- the end -------------------------------------------------------------------------------------------------------

proc viewer::quit {} {
    if {![may_lose Quit]} return
    if {".side" in [.panes panes]} { keep side_width [points [winfo width .side]] }
    destroy .
}

proc viewer::leave {} {
    variable ended
    write_settings
    remove_private_folder
    set ended 1
}
