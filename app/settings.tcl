# What is kept between runs: recent files, geometry, what is shown, colours, keys. One text file in the place that the
# system has for such files, a line "pelt viewer settings 1" and then names and values as a Tcl list.
#
# It is read as data and never evaluated. It is written under another name and then renamed, so that it is either the
# old one or the new one whole. One that cannot be understood is set aside and the viewer starts with what it is made
# with. Without a window it is not read at all.
#
# Owns: value, listeners, problem, pending, kept
# Offers: read_file, write_file, path, problem, get, keep, name_of, changed, listen, is_good, remember_recent
# Calls: files, numbers, options

namespace eval viewer::settings {
    namespace export read_file write_file path problem get keep name_of changed listen is_good remember_recent
    namespace ensemble create
    variable value           ;# of each setting, by its name
    variable listeners {}    ;# of each setting: the commands to call when it was changed
    variable problem {}      ;# what there is to tell of the file at the start
    variable pending 0
    variable kept 1          ;# 0: another file stands where it should be written
    variable HEADER "pelt viewer settings 1"
    variable MOST_RECENT 10
    variable MOST_SETTINGS 1000000    ;# bytes
    variable MOST_VALUE 20000         ;# characters

    # name, value at first, what a value must be
    variable SETTINGS {
        recent      {}                is_list_of_names
        geometry    {}                is_geometry
        side        1                 is_switch
        side_width  0                 is_pixels
        axes        1                 is_switch
        display     {}                is_display
        lod         {}                is_lod
        background  {0.16 0.18 0.21}  is_colour
        mode        turn              is_mode
        free        0                 is_switch
        rate        30                is_rate
        loop        1                 is_switch
        watch       0                 is_switch
        scale       0                 is_scale
        keys        {}                is_keys
        folder      {}                is_text
    }
}

proc viewer::settings::take_originals {} {
    variable value
    variable SETTINGS
    foreach {name original check} $SETTINGS { set value($name) $original }
}
viewer::settings::take_originals

# ---- asking and changing -------------------------------------------------------------------------------------------

proc viewer::settings::get {name} {
    variable value
    return $value($name)
}

# The variable of a setting, for widgets that show it. They call "changed" when they were used.
proc viewer::settings::name_of {name} {
    return ::viewer::settings::value($name)
}

# Changes one setting, if it is another; the file follows a moment later.
proc viewer::settings::keep {name new} {
    variable value
    if {$value($name) eq $new} return
    set value($name) $new
    changed $name
}

proc viewer::settings::changed {name} {
    variable pending
    variable listeners
    if {!$pending} {
        set pending 1
        after 1000 viewer::settings::write_file
    }
    if {![dict exists $listeners $name]} return
    foreach command [dict get $listeners $name] { {*}$command }
}

# From now on this command is called when that setting was changed.
proc viewer::settings::listen {name command} {
    variable listeners
    dict lappend listeners $name $command
}

# ---- the place -----------------------------------------------------------------------------------------------------

proc viewer::settings::path {} {
    if {$::tcl_platform(platform) eq "windows"} {
        set base [expr {[info exists ::env(APPDATA)] ? $::env(APPDATA) : [file join ~ AppData Roaming]}]
    } elseif {$::tcl_platform(os) eq "Darwin"} {
        set base [file join ~ Library {Application Support}]
    } elseif {[info exists ::env(XDG_CONFIG_HOME)] && [file pathtype $::env(XDG_CONFIG_HOME)] eq "absolute"} {
        set base $::env(XDG_CONFIG_HOME)
    } else {
        set base [file join ~ .config]
    }
    if {[catch { file normalize $base } base]} { return {} }
    return [file join $base pelt viewer.conf]
}

# What there is to tell of the file that was read: nothing, if all is well.
proc viewer::settings::problem {} {
    variable problem
    return $problem
}

# ---- reading -------------------------------------------------------------------------------------------------------

# Takes what the file holds. Never fails: what there is to say of it, "problem" tells.
proc viewer::settings::read_file {} {
    variable value
    variable SETTINGS
    variable problem
    variable MOST_SETTINGS
    variable MOST_VALUE
    take_originals
    set problem {}
    set path [path]
    if {$path eq {} || ![file exists $path]} return
    if {[catch { parse [viewer::files text_of_file $path $MOST_SETTINGS] } found]} {
        set problem [set_aside $path]
        return
    }
    foreach {name original check} $SETTINGS {
        if {![dict exists $found $name]} continue
        set read [dict get $found $name]
        # Nothing of ours is that long, and a menu or a key of it would take minutes.
        if {[string length $read] <= $MOST_VALUE && [$check $read]} { set value($name) $read }
    }
}

# A dict, or an error when the text is not one of ours from its first line to its last.
proc viewer::settings::parse {text} {
    variable HEADER
    set end [string first \n $text]
    if {$end < 0 || [string range $text 0 $end-1] ne $HEADER} { error "no settings" }
    set body [string range $text $end+1 end]
    if {![string is list $body] || [llength $body] % 2 != 0} { error "no list" }
    if {[lindex $body end-1] ne "end"} { error "cut off" }
    return $body
}

# Gives the damaged file another name, so that nothing of it is lost. What to tell of it.
proc viewer::settings::set_aside {path} {
    variable kept
    set aside $path.damaged
    for {set number 2} {[file exists $aside]} {incr number} { set aside $path.damaged-$number }
    if {[catch { file rename $path $aside } message]} {
        set kept 0
        return "The settings could not be read and are left alone: $path"
    }
    return "The settings could not be read. They were set aside as $aside"
}

# ---- writing -------------------------------------------------------------------------------------------------------

# Nothing, or why it could not be done: not being able to keep settings is no reason to stop anyone.
proc viewer::settings::write_file {} {
    variable value
    variable SETTINGS
    variable HEADER
    variable pending
    variable kept
    after cancel viewer::settings::write_file
    set pending 0
    set path [path]
    if {$path eq {} || !$kept} { return "there is no place for settings" }
    if {[catch { file mkdir [file dirname $path] } message]} { return $message }
    set lines [list $HEADER]
    foreach {name original check} $SETTINGS { lappend lines [list $name $value($name)] }
    lappend lines [list end {}]
    return [viewer::files write_bytes $path [encoding convertto utf-8 "[join $lines \n]\n"]]
}

# ---- what values must be -------------------------------------------------------------------------------------------

# Whether that setting can have this value.
proc viewer::settings::is_good {wanted new} {
    variable SETTINGS
    foreach {name original check} $SETTINGS {
        if {$name eq $wanted} { return [$check $new] }
    }
    return 0
}

proc viewer::settings::is_text {value} { return 1 }

proc viewer::settings::is_switch {value} { return [expr {$value in {0 1}}] }

proc viewer::settings::is_pixels {value} { return [regexp {^(0|[1-9][0-9]{0,3})$} $value] }

proc viewer::settings::is_mode {value} { return [expr {$value in {turn pan zoom}}] }

proc viewer::settings::is_rate {value} { return [expr {[regexp {^[1-9][0-9]?$} $value] && $value <= 60}] }

proc viewer::settings::is_lod {value} { return [regexp {^[0-6]?$} $value] }

proc viewer::settings::is_scale {value} { return [expr {$value in {0 1.0 1.25 1.5 2.0}}] }

proc viewer::settings::is_geometry {value} {
    return [regexp {^([1-9][0-9]{2,3}x[1-9][0-9]{2,3}(\+-?[0-9]{1,5}\+-?[0-9]{1,5})?)?$} $value]
}

proc viewer::settings::is_list_of_names {value} {
    variable MOST_RECENT
    if {![string is list $value] || [llength $value] > $MOST_RECENT} { return 0 }
    # Tcl would look for the home of a user.
    return [expr {[lsearch -glob $value ~*] < 0}]
}

proc viewer::settings::is_colour {value} {
    if {![string is list $value] || ![viewer::numbers are [join $value ,] 3]} { return 0 }
    foreach part $value {
        if {[viewer::numbers decimals $part] < 0 || [viewer::numbers decimals $part] > 1} { return 0 }
    }
    return 1
}

proc viewer::settings::is_display {value} {
    if {![string is list $value] || [llength $value] % 2 != 0} { return 0 }
    foreach {flag on} $value {
        if {$flag ni [viewer::options flags] || $on ni {0 1}} { return 0 }
    }
    return 1
}

proc viewer::settings::is_keys {value} {
    return [expr {[string is list $value] && [llength $value] % 2 == 0}]
}

# ---- recent files --------------------------------------------------------------------------------------------------

proc viewer::settings::remember_recent {path} {
    variable value
    variable MOST_RECENT
    set others [lsearch -all -inline -not -exact $value(recent) $path]
    keep recent [lrange [linsert $others 0 $path] 0 $MOST_RECENT-1]
    keep folder [file dirname $path]
}
