# What is shown of the models: the switches of the library, and how fine curved surfaces are.
#
# Owns: shown
# Offers: get, name_of, toggle, flag_changed, lod_changed, change_lod, draw_textures_in, apply_options, apply_kept,
#     read_back
# Calls: library, options, settings, view

namespace eval viewer::display {
    namespace export get name_of toggle flag_changed lod_changed change_lod draw_textures_in apply_options apply_kept \
        read_back
    namespace ensemble create
    variable shown    ;# by its name 0 or 1 of each switch; "lod" is the level of detail
    array set shown {lod 1}
}

# ---- asking and changing -------------------------------------------------------------------------------------------

proc viewer::display::get {name} {
    variable shown
    return $shown($name)
}

# The variable of a switch or of "lod", for widgets that show it. They call "flag_changed" or "lod_changed" when they
# were used.
proc viewer::display::name_of {name} {
    return ::viewer::display::shown($name)
}

proc viewer::display::toggle {name} {
    variable shown
    set shown($name) [expr {!$shown($name)}]
    flag_changed $name
}

proc viewer::display::flag_changed {name} {
    variable shown
    sorvel display $name $shown($name)
    set kept [viewer::settings get display]
    dict set kept $name $shown($name)
    viewer::settings keep display $kept
    viewer::view draw_soon
}

proc viewer::display::lod_changed {} {
    variable shown
    sorvel display lod $shown(lod)
    viewer::settings keep lod $shown(lod)
    viewer::view draw_soon
}

proc viewer::display::change_lod {by} {
    variable shown
    set shown(lod) [expr {max(0, min(6, $shown(lod) + $by))}]
    lod_changed
}

# Each time draws the textures of the models in the scene in once more: the library has no way back but a reload.
proc viewer::display::draw_textures_in {} {
    sorvel display smooth on
    viewer::view draw_soon
}

# ---- the start -----------------------------------------------------------------------------------------------------

# The switches of the command line.
proc viewer::display::apply_options {} {
    foreach value [viewer::options get display] {
        regexp {^(\w+)=(\w+)$} $value -> flag setting
        sorvel display $flag $setting
    }
    if {[viewer::options get lod] ne {}} { sorvel display lod [viewer::options get lod] }
}

# The flags that were kept; those of the command line come first and stay.
proc viewer::display::apply_kept {} {
    set told [lmap value [viewer::options get display] { lindex [split $value =] 0 }]
    foreach {name on} [viewer::settings get display] {
        if {$name ni $told && $name ne "smooth"} { sorvel display $name $on }
    }
    set level [viewer::settings get lod]
    if {![viewer::options given lod] && $level ne {}} { sorvel display lod $level }
}

# Takes over what the library shows.
proc viewer::display::read_back {} {
    variable shown
    foreach name [viewer::options flags] { set shown($name) [expr {[viewer::library ask display $name] eq "on"}] }
    set level [string trim [viewer::library ask display lod]]
    if {[string is integer -strict $level]} { set shown(lod) $level }
}
