# The connection to the library, which is one command, sorvel. Its verb "scene" answers questions and raises errors.
#
# What surprises: the other verbs tell a failure in a message box. None of these is ever shown: while a verb runs
# "quietly" the texts are gathered for whoever asked, otherwise they go to whoever listens.
#
# Owns: path, quiet, gathered, listener
# Offers: connect, path, listen, quietly, ask, one_word
# Calls: files, options

namespace eval viewer::library {
    namespace export connect path listen quietly ask one_word
    namespace ensemble create
    variable path {}
    variable quiet 0          ;# depth of the commands that gather texts
    variable gathered {}      ;# texts of the boxes since the outermost of them began
    variable listener {}      ;# the command that is told what nobody gathers
}

proc viewer::library::connect {} {
    variable path
    take_boxes
    set path [expr {[info exists ::env(PELT_LIBRARY)] ? $::env(PELT_LIBRARY) : [default_library]}]
    if {[llength [info commands ::sorvel]] > 0} return
    if {[file exists $path]} {
        load $path Sorvel
    } elseif {[catch {package require pelt} message]} {
        viewer::options die "the library is not built: $path" 1
    }
}

# Where the library is built, or lies in an archive that was unpacked.
proc viewer::library::default_library {} {
    set root [viewer::files root]
    if {$::tcl_platform(platform) ne "windows"} {
        return [file join $root build libpelt[info sharedlibextension]]
    }
    set unpacked [file join $root pelt.dll]
    return [expr {[file exists $unpacked] ? $unpacked : [file join $root build windows pelt.dll]}]
}

# The file that the library came from.
proc viewer::library::path {} {
    variable path
    return $path
}

# ---- boxes ---------------------------------------------------------------------------------------------------------

# From now on this command is called with each text that the library has to tell, in the place of standard error.
proc viewer::library::listen {command} {
    variable listener
    set listener $command
}

# The library calls Tk's box by its name, and so do Tk's own dialogs, whose questions go to whom they are for. To be
# called when Tk is there, which on Windows makes its own.
proc viewer::library::take_boxes {} {
    if {[llength [info commands ::viewer::library::own_box]] > 0} return
    catch { auto_load ::tk_messageBox }
    rename ::tk_messageBox ::viewer::library::own_box
    interp alias {} ::tk_messageBox {} viewer::library::take_box
}

proc viewer::library::take_box {args} {
    variable quiet
    variable gathered
    variable listener
    if {![is_box_of_library $args]} { return [uplevel #0 [list ::viewer::library::own_box {*}$args]] }
    set text [lindex $args end]
    if {$quiet} {
        lappend gathered $text
    } elseif {$listener ne {}} {
        {*}$listener $text
    } else {
        puts stderr "viewer: [regsub -all {\s+} $text { }]"
    }
    return ok
}

# The library's boxes have these words and no others.
proc viewer::library::is_box_of_library {words} {
    if {[llength $words] != 8 || [lindex $words 6] ne "-message"} { return 0 }
    return [expr {[lrange $words 0 5] in {
        {-type ok -title Information -icon info} {-type ok -title Error -icon error}
    }}]
}

# Runs a verb of the library. A list of its result and the texts of the boxes that it would have shown.
proc viewer::library::quietly {args} {
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
proc viewer::library::ask {args} {
    lassign [quietly sorvel {*}$args] result texts
    if {[llength $texts] > 0} { return {} }
    return [string trim $result]
}

# ---- words ---------------------------------------------------------------------------------------------------------

# A name as the library can take it: one word.
proc viewer::library::one_word {text} {
    return [regsub -all {\s+} [string trim $text] _]
}
