# The connection to the library, which is one command, sorvel.
#
# What surprises: the library tells every failure in a message box, three of them for a file that does not load. No
# box is ever shown here. While a command runs "quietly" the texts are gathered for whoever asked, otherwise they
# become notices.

namespace eval viewer {
    variable library_path {}
    variable quiet 0          ;# depth of the commands that gather texts
    variable gathered {}      ;# texts of the boxes since the outermost of them began
    variable status           ;# what the status texts said last
    array set status {triangles 0 message {}}
}

proc viewer::load_library {} {
    variable library_path
    take_boxes
    set library_path [expr {[info exists ::env(PELT_LIBRARY)] ? $::env(PELT_LIBRARY) : [default_library]}]
    if {[llength [info commands ::sorvel]] > 0} return
    if {[file exists $library_path]} {
        load $library_path Sorvel
    } elseif {[catch {package require pelt} message]} {
        die "the library is not built: $library_path" 1
    }
}

# Where the library is built, or lies in an archive that was unpacked.
proc viewer::default_library {} {
    variable root_folder
    if {$::tcl_platform(platform) ne "windows"} {
        return [file join $root_folder build libpelt[info sharedlibextension]]
    }
    set unpacked [file join $root_folder pelt.dll]
    return [expr {[file exists $unpacked] ? $unpacked : [file join $root_folder build windows pelt.dll]}]
}

# ---- boxes ---------------------------------------------------------------------------------------------------------

# In the place of Tk's: the library calls it by that name. To be called when Tk is there, which on Windows makes its own.
proc viewer::take_boxes {} {
    interp alias {} ::tk_messageBox {} viewer::take_box
}

proc viewer::take_box {args} {
    variable quiet
    variable gathered
    set text [expr {[dict exists $args -message] ? [dict get $args -message] : {}}]
    if {$quiet} {
        lappend gathered $text
    } else {
        tell_notice $text
    }
    return ok
}

# Runs a command of the library. A list of its result and the texts of the boxes that it would have shown.
proc viewer::quietly {args} {
    variable quiet
    variable gathered
    if {$quiet == 0} { set gathered {} }
    set before [llength $gathered]
    incr quiet
    try {
        set result [{*}$args]
    } finally {
        incr quiet -1
    }
    set texts [lrange $gathered $before end]
    # A call that came in the middle of another, from an event, does not leave its texts to that one.
    set gathered [lrange $gathered 0 [expr {$before - 1}]]
    return [list $result $texts]
}

# The result of a command of the library, or an empty text where it would have shown a box.
proc viewer::ask {args} {
    lassign [quietly sorvel {*}$args] result texts
    return [expr {[llength $texts] > 0 ? {} : $result}]
}

# ---- status texts --------------------------------------------------------------------------------------------------

# The status procedure: "Time: 0.10 of 1.60, Triangles: 782, Ready", a size as in "640x480", or a bare text. It only
# takes notes: calling the library from here would come in the middle of a load.
proc viewer::on_status {args} {
    variable status
    set text [join $args { }]
    if {[regexp {^Time: (\S+) of (\S+), Triangles: (\d+), (.*)$} $text -> time end triangles message]} {
        set status(triangles) $triangles
        time_heard $time $end
        return
    }
    if {[regexp {^\d+x\d+$} $text]} { set status(size) $text }
}

# Asks for a status text now. The number of triangles in a frame and the clock are told nowhere else, and a file that is
# not there is the one request that makes such a text and changes nothing.
proc viewer::ask_status {} {
    quietly sorvel file add [file join / pelt no such file]
}

# ---- numbers -------------------------------------------------------------------------------------------------------

# A number as the library reads it: no exponent.
proc viewer::plain {number} {
    return [format %.6f $number]
}

# What a value is in 32 bits.
proc viewer::float32 {number} {
    binary scan [binary format r $number] r number
    return $number
}

# The numbers of a result such as "1.000000 2.000000 ", or an empty list when it is none (the box answered "ok").
proc viewer::numbers {text} {
    set numbers [regexp -all -inline {\S+} $text]
    foreach number $numbers {
        if {![string is double -strict $number]} { return {} }
    }
    return $numbers
}
