# The connection to the library, which is one command, sorvel. Its verb "scene" answers questions and raises errors.
#
# What surprises: the other verbs tell a failure in a message box. None of these is ever shown: while a verb runs
# "quietly" the texts are gathered for whoever asked, otherwise they become notices.

namespace eval viewer {
    variable library_path {}
    variable quiet 0          ;# depth of the commands that gather texts
    variable gathered {}      ;# texts of the boxes since the outermost of them began
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

# The library calls Tk's box by its name, and so do Tk's own dialogs, whose questions go to whom they are for. To be
# called when Tk is there, which on Windows makes its own.
proc viewer::take_boxes {} {
    if {[llength [info commands ::viewer::own_box]] > 0} return
    catch { auto_load ::tk_messageBox }
    rename ::tk_messageBox ::viewer::own_box
    interp alias {} ::tk_messageBox {} viewer::take_box
}

proc viewer::take_box {args} {
    variable quiet
    variable gathered
    if {![is_box_of_library $args]} { return [uplevel #0 [list ::viewer::own_box {*}$args]] }
    set text [lindex $args end]
    if {$quiet} {
        lappend gathered $text
    } else {
        tell_notice $text
    }
    return ok
}

# The library's boxes have these words and no others.
proc viewer::is_box_of_library {words} {
    if {[llength $words] != 8 || [lindex $words 6] ne "-message"} { return 0 }
    return [expr {[lrange $words 0 5] in {
        {-type ok -title Information -icon info} {-type ok -title Error -icon error}
    }}]
}

# Runs a verb of the library. A list of its result and the texts of the boxes that it would have shown.
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

# The result of a verb of the library, or an empty text where it would have shown a box.
proc viewer::ask {args} {
    lassign [quietly sorvel {*}$args] result texts
    return [expr {[llength $texts] > 0 ? {} : $result}]
}

# ---- numbers -------------------------------------------------------------------------------------------------------

# A number as the library's older verbs read it: no exponent.
proc viewer::plain {number} {
    return [format %.6f $number]
}

# The numbers of a result such as "1.000000 2.000000 ", or an empty list when it is none (the box answered "ok").
proc viewer::numbers {text} {
    set numbers [regexp -all -inline {\S+} $text]
    foreach number $numbers {
        if {![string is double -strict $number]} { return {} }
    }
    return $numbers
}
