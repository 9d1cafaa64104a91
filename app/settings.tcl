# What is kept between runs: recent files, geometry, what is shown, colours, keys. One text file in the place that the
# system has for such files, a line "pelt viewer settings 1" and then names and values as a Tcl list.
#
# It is read as data and never evaluated. It is written under another name and then renamed, so that it is either the
# old one or the new one whole. One that cannot be understood is set aside and the viewer starts with what it is made
# with.

namespace eval viewer {
    variable SETTINGS_HEADER "pelt viewer settings 1"
    variable setting
    variable settings_word {}      ;# what there is to tell of the settings file at the start
    variable settings_pending 0
    variable settings_kept 1       ;# 0: another file stands where it should be written
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

# ---- the place -----------------------------------------------------------------------------------------------------

proc viewer::settings_path {} {
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

# ---- reading -------------------------------------------------------------------------------------------------------

# Fills "setting". Never fails: what there is to say goes into "settings_word".
proc viewer::read_settings {} {
    variable setting
    variable SETTINGS
    variable settings_word
    variable MOST_SETTINGS
    variable MOST_VALUE
    foreach {name value check} $SETTINGS { set setting($name) $value }
    set path [settings_path]
    if {$path eq {} || ![file exists $path]} return
    if {[catch { parse_settings [text_of_file $path $MOST_SETTINGS] } found]} {
        set settings_word [set_settings_aside $path]
        return
    }
    foreach {name value check} $SETTINGS {
        if {![dict exists $found $name]} continue
        set value [dict get $found $name]
        # Nothing of ours is that long, and a menu or a key of it would take minutes.
        if {[string length $value] <= $MOST_VALUE && [$check $value]} { set setting($name) $value }
    }
}

# A dict, or an error when the text is not one of ours from its first line to its last.
proc viewer::parse_settings {text} {
    variable SETTINGS_HEADER
    set end [string first \n $text]
    if {$end < 0 || [string range $text 0 $end-1] ne $SETTINGS_HEADER} { error "no settings" }
    set body [string range $text $end+1 end]
    if {![string is list $body] || [llength $body] % 2 != 0} { error "no list" }
    if {[lindex $body end-1] ne "end"} { error "cut off" }
    return $body
}

# Gives the damaged file another name, so that nothing of it is lost. What to tell of it.
proc viewer::set_settings_aside {path} {
    variable settings_kept
    set aside $path.damaged
    for {set number 2} {[file exists $aside]} {incr number} { set aside $path.damaged-$number }
    if {[catch { file rename $path $aside } message]} {
        set settings_kept 0
        return "The settings could not be read and are left alone: $path"
    }
    return "The settings could not be read. They were set aside as $aside"
}

# ---- writing -------------------------------------------------------------------------------------------------------

# Changes one setting; the file follows a moment later.
proc viewer::keep {name value} {
    variable setting
    variable settings_pending
    if {$setting($name) eq $value} return
    set setting($name) $value
    if {$settings_pending} return
    set settings_pending 1
    after 1000 viewer::write_settings
}

# Nothing, or why it could not be done: not being able to keep settings is no reason to stop anyone.
proc viewer::write_settings {} {
    variable setting
    variable SETTINGS
    variable SETTINGS_HEADER
    variable settings_pending
    variable settings_kept
    after cancel viewer::write_settings
    set settings_pending 0
    set path [settings_path]
    if {$path eq {} || !$settings_kept} { return "there is no place for settings" }
    if {[catch { file mkdir [file dirname $path] } message]} { return $message }
    set lines [list $SETTINGS_HEADER]
    foreach {name value check} $SETTINGS { lappend lines [list $name $setting($name)] }
    lappend lines [list end {}]
    return [write_bytes $path [encoding convertto utf-8 "[join $lines \n]\n"]]
}

# ---- what values must be -------------------------------------------------------------------------------------------

proc viewer::is_text {value} { return 1 }
proc viewer::is_switch {value} { return [expr {$value in {0 1}}] }
proc viewer::is_pixels {value} { return [regexp {^[0-9]{1,4}$} $value] }
proc viewer::is_mode {value} { return [expr {$value in {turn pan zoom}}] }
proc viewer::is_rate {value} { return [expr {[regexp {^[1-9][0-9]?$} $value] && $value <= 60}] }
proc viewer::is_lod {value} { return [regexp {^[0-6]?$} $value] }
proc viewer::is_scale {value} { return [expr {$value in {0 1.0 1.25 1.5 2.0}}] }
proc viewer::is_geometry {value} {
    return [regexp {^([1-9][0-9]{2,3}x[1-9][0-9]{2,3}(\+-?[0-9]{1,5}\+-?[0-9]{1,5})?)?$} $value]
}

proc viewer::is_list_of_names {value} {
    variable MOST_RECENT
    if {![string is list $value] || [llength $value] > $MOST_RECENT} { return 0 }
    # Tcl would look for the home of a user.
    return [expr {[lsearch -glob $value ~*] < 0}]
}

proc viewer::is_colour {value} {
    if {![string is list $value] || ![is_numbers [join $value ,] 3]} { return 0 }
    foreach part $value {
        if {[decimals $part] < 0 || [decimals $part] > 1} { return 0 }
    }
    return 1
}

proc viewer::is_display {value} {
    variable FLAGS
    if {![string is list $value] || [llength $value] % 2 != 0} { return 0 }
    foreach {flag on} $value {
        if {$flag ni $FLAGS || $on ni {0 1}} { return 0 }
    }
    return 1
}

proc viewer::is_keys {value} {
    return [expr {[string is list $value] && [llength $value] % 2 == 0}]
}

# ---- recent files --------------------------------------------------------------------------------------------------

proc viewer::remember_recent {path} {
    variable setting
    variable MOST_RECENT
    set others [lsearch -all -inline -not -exact $setting(recent) $path]
    keep recent [lrange [linsert $others 0 $path] 0 $MOST_RECENT-1]
    keep folder [file dirname $path]
}
