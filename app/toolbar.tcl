# The toolbar. The buttons stand in the order in which they go into the menu at its end where the window is too narrow
# for them.
#
# Owns: order, shown
# Offers: build, arrange_anew
# Calls: display, settings, theme, view

namespace eval viewer::toolbar {
    namespace export build arrange_anew
    namespace ensemble create
    namespace import ::viewer::theme::px
    variable order {}      ;# names of the buttons and the gaps between them
    variable shown -1      ;# how many of them are in the bar
}

proc viewer::toolbar::build {} {
    variable order
    ttk::frame .tools -padding [list [px 6] [px 3]]
    # First, so that these two never go.
    ttk::checkbutton .tools.side -text Panels -style Toolbutton -variable [viewer::settings name_of side] \
        -command {viewer::settings changed side} -takefocus 0
    pack .tools.side -side right
    ttk::menubutton .tools.more -text More -menu .tools.more.menu -takefocus 0
    menu .tools.more.menu
    set order {}
    foreach {mode text} {turn Turn pan Shift zoom Zoom} {
        ttk::radiobutton .tools.$mode -text $text -style Toolbutton -value $mode \
            -variable [viewer::settings name_of mode] -command {viewer::settings changed mode} -takefocus 0
        lappend order $mode
    }
    gap 1
    foreach {view text} {north North south South east East west West down Above up Below} {
        ttk::button .tools.$view -text $text -style Toolbutton -command [list viewer::view aim $view] -takefocus 0
        lappend order $view
    }
    gap 2
    ttk::button .tools.fit -text Fit -style Toolbutton -command {viewer::view fit} -takefocus 0
    lappend order fit
    gap 3
    foreach {name text} {wireframe Wireframe textures Textures lighting Light} {
        ttk::checkbutton .tools.$name -text $text -style Toolbutton -variable [viewer::display name_of $name] \
            -command [list viewer::display flag_changed $name] -takefocus 0
        lappend order $name
    }
    bind .tools <Configure> viewer::toolbar::arrange
    arrange
}

proc viewer::toolbar::gap {number} {
    variable order
    ttk::separator .tools.gap$number -orient vertical
    lappend order gap$number
}

# Puts as many buttons into the bar as there is room for, and the others into the menu.
proc viewer::toolbar::arrange {} {
    variable order
    variable shown
    set room [expr {[winfo width .tools] - [winfo reqwidth .tools.side] - 2 * [px 6]}]
    set wanted 0
    foreach name $order { incr wanted [width_of $name] }
    set count [llength $order]
    # Before the window is on the screen nothing has a width.
    if {[winfo width .tools] > 1 && $wanted > $room} {
        set wanted [winfo reqwidth .tools.more]
        set count 0
        foreach name $order {
            incr wanted [width_of $name]
            if {$wanted > $room} break
            incr count
        }
    }
    if {$count eq $shown} return
    set shown $count
    pack forget .tools.more {*}[lmap name $order { string cat .tools. $name }]
    foreach name [lrange $order 0 $count-1] {
        if {[string match gap* $name]} {
            pack .tools.$name -side left -fill y -padx [px 6] -pady [px 3]
        } else {
            pack .tools.$name -side left
        }
    }
    if {$count == [llength $order]} return
    pack .tools.more -side right
    fill_more [lrange $order $count end]
}

# Once the buttons have another size.
proc viewer::toolbar::arrange_anew {} {
    variable shown
    set shown -1
    after idle viewer::toolbar::arrange
}

proc viewer::toolbar::width_of {name} {
    return [expr {[winfo reqwidth .tools.$name] + ([string match gap* $name] ? 2 * [px 6] : 0)}]
}

proc viewer::toolbar::fill_more {names} {
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
