# What a run without a window tells of its work: how far it is, what failed, and how long the pictures took.
#
# Owns: failures, done, wanted, timing, shows_progress
# Offers: begin, expect, picture_done, cell_done, sheet_done, scene_failed, status, timing_start, timing_part
# Calls: options, scene

namespace eval viewer::report {
    namespace export begin expect picture_done cell_done sheet_done scene_failed status timing_start timing_part
    namespace ensemble create
    variable failures 0
    variable done 0       ;# pictures made
    variable wanted 0     ;# pictures to make
    variable timing       ;# milliseconds of the parts of the picture in hand
    variable shows_progress 0
}

proc viewer::report::begin {} {
    variable shows_progress
    # A terminal is the one kind of channel that has these options.
    set shows_progress [expr {![catch { fconfigure stderr -mode }] && ![info exists ::env(PELT_NO_PROGRESS)]}]
}

# How many pictures there will be, for the progress line.
proc viewer::report::expect {pictures} {
    variable wanted
    set wanted $pictures
}

# The exit status. The progress line is gone then.
proc viewer::report::status {} {
    variable failures
    progress_end
    return [expr {$failures > 0}]
}

# ---- pictures ------------------------------------------------------------------------------------------------------

# A picture was written, or the message says why not.
proc viewer::report::picture_done {path message} {
    variable done
    incr done
    tell_of $path $message
    if {$message ne {}} return
    timing_tell $path
    progress $path
}

# A small picture stands on the contact sheet.
proc viewer::report::cell_done {path} {
    variable done
    incr done
    progress $path
}

# The contact sheet was written, or the message says why not.
proc viewer::report::sheet_done {path message} {
    tell_of $path $message
}

proc viewer::report::tell_of {path message} {
    variable failures
    progress_end
    if {$message ne {}} {
        incr failures
        puts stderr "viewer: [file nativename $path]: $message"
        return
    }
    puts [file nativename [file normalize $path]]
    flush stdout
}

# The scene that was asked for last could not be had.
proc viewer::report::scene_failed {} {
    variable failures
    incr failures
    progress_end
    puts stderr "viewer: [viewer::scene failure_line]"
}

# ---- timings and progress ------------------------------------------------------------------------------------------

proc viewer::report::timing_start {} {
    variable timing
    set timing(at) [clock microseconds]
}

# Ends a part; the next begins.
proc viewer::report::timing_part {name} {
    variable timing
    set now [clock microseconds]
    set timing($name) [expr {($now - $timing(at)) / 1000.0}]
    set timing(at) $now
}

proc viewer::report::timing_tell {path} {
    variable timing
    if {![viewer::options get timings]} return
    set parts {}
    foreach name {load {first frame} capture write} {
        if {[info exists timing($name)]} { lappend parts [format "%s %.1f ms" $name $timing($name)] }
    }
    puts stderr "timings [file tail $path]: [join $parts {, }]"
    # The next picture of the same scene is not loaded again.
    unset -nocomplain timing(load)
}

# One line that is written over, and only where somebody looks at it.
proc viewer::report::progress {path} {
    variable shows_progress
    variable done
    variable wanted
    if {!$shows_progress || $wanted < 2} return
    puts -nonewline stderr "\r$done of $wanted  [file tail $path]\033\[K"
    flush stderr
}

proc viewer::report::progress_end {} {
    variable shows_progress
    if {$shows_progress} {
        puts -nonewline stderr "\r\033\[K"
        flush stderr
    }
}
