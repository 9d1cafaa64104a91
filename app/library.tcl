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
    variable root_folder
    variable library_path
    set library_path [expr {[info exists ::env(PELT_LIBRARY)] ? $::env(PELT_LIBRARY)
        : [file join $root_folder build libpelt[info sharedlibextension]]}]
    if {[llength [info commands ::sorvel]] > 0} return
    if {[file exists $library_path]} {
        load $library_path Sorvel
    } elseif {[catch {package require pelt} message]} {
        die "the library is not built: $library_path" 1
    }
}

# ---- boxes ---------------------------------------------------------------------------------------------------------

# In the place of Tk's: the library calls it by this name.
proc ::tk_messageBox {args} {
    set text [expr {[dict exists $args -message] ? [dict get $args -message] : {}}]
    if {$::viewer::quiet} {
        lappend ::viewer::gathered $text
    } else {
        viewer::tell_notice $text
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
