# Pictures without a window that anyone sees: ./viewer --output and --contact-sheet.
#
# Each run stands alone: it reads no settings and leaves nothing behind but its pictures. A model that fails is told on
# standard error and the others are done all the same.

namespace eval viewer {
    variable batch_failures 0
    variable batch_done 0       ;# pictures written
    variable batch_wanted 0     ;# pictures to write
    variable batch_timing       ;# milliseconds of the parts of the picture in hand
    variable shows_progress 0
    variable MARGIN 2           ;# the view's border, which a picture leaves out
}

proc viewer::run_batch {files} {
    variable option
    variable given
    variable batch_failures
    variable shows_progress
    # A terminal is the one kind of channel that has these options.
    set shows_progress [expr {![catch { fconfigure stderr -mode }] && ![info exists ::env(PELT_NO_PROGRESS)]}]
    batch_window $option(width) $option(height)
    if {$given(output) && [names_a_folder $option(output)] && [catch { file mkdir $option(output) } message]} {
        die "the directory $option(output) could not be made: $message" 1
    }
    plan_batch $files
    if {$given(output)} {
        if {$option(animate) ne {}} {
            batch_scene_list $option(animate)
        } elseif {[names_a_folder $option(output)]} {
            batch_each $files
        } else {
            batch_together $files
        }
    }
    if {$given(contact-sheet)} { batch_sheet $files }
    progress_end
    remove_private_folder
    exit [expr {$batch_failures > 0 ? 1 : 0}]
}

# How many pictures there will be, for the progress line.
proc viewer::plan_batch {files} {
    variable option
    variable given
    variable batch_wanted
    set models [expr {[names_a_folder $option(output)] ? max(1, [llength $files]) : 1}]
    set batch_wanted [expr {$given(output) ? $models * [pictures_of_a_scene] : 0}]
    if {$given(contact-sheet)} { incr batch_wanted [llength $files] }
}

proc viewer::pictures_of_a_scene {} {
    variable option
    if {$option(turntable) ne {}} { return [scan $option(turntable) %d] }
    if {$option(frames) ne {}} {
        return [expr {int(floor(($option(last) - $option(first)) * $option(rate) + 1e-6)) + 1}]
    }
    return 1
}

# A window of just the size of the pictures, which no window manager gets to change.
proc viewer::batch_window {width height} {
    wm overrideredirect . 1
    wm geometry . +0+0
    frame .view -background {}
    pack .view
    batch_size $width $height
    create_view
    apply_display
}

proc viewer::batch_size {width height} {
    variable MARGIN
    .view configure -width [expr {($width + 3) / 4 * 4 + $MARGIN}] -height [expr {($height + 3) / 4 * 4 + $MARGIN}]
    update
}

# ---- the scenes ----------------------------------------------------------------------------------------------------

# A picture, or a series, of each model by itself.
proc viewer::batch_each {files} {
    variable option
    set taken {}
    foreach file $files {
        set name [file rootname [file tail $file]]
        set ending .png
        for {set number 2} {"$name$ending" in $taken} {incr number} {
            set name [file rootname [file tail $file]]-$number
        }
        lappend taken $name$ending
        if {[batch_load open $file]} { batch_pictures [file join $option(output) $name$ending] }
    }
}

# All models in one scene.
proc viewer::batch_together {files} {
    variable option
    set verb open
    foreach file $files {
        if {[batch_load $verb $file]} { set verb add }
    }
    if {$verb eq "add"} {
        start_view
        batch_pictures $option(output)
    }
}

proc viewer::batch_scene_list {file} {
    variable option
    set path $option(output)
    if {[names_a_folder $path]} { set path [file join $path [file rootname [file tail $file]].png] }
    if {[batch_load open $file]} { batch_pictures $path }
}

# 1, or 0 after the reason was told.
proc viewer::batch_load {verb file} {
    if {$verb eq "open"} timing_start
    set loaded [load_scene $verb $file]
    timing_part load
    if {$loaded eq {}} {
        batch_failed
        return 0
    }
    if {$verb eq "open"} start_view
    return 1
}

proc viewer::batch_failed {} {
    variable batch_failures
    incr batch_failures
    progress_end
    puts stderr "viewer: [failure_line]"
}

# ---- the pictures --------------------------------------------------------------------------------------------------

# The pictures of the scene that is open: one, or numbered ones round the upright axis or along the time.
proc viewer::batch_pictures {path} {
    variable option
    set count [pictures_of_a_scene]
    if {$option(turntable) ne {}} {
        set step [list viewer::turn_by [expr {360.0 / $count}] 0]
    } elseif {$option(frames) ne {}} {
        time_rate $option(rate)
        time_seek $option(first)
        set step [list viewer::time_step 1]
    } else {
        batch_picture $path
        return
    }
    set digits [expr {max(3, [string length $count])}]
    for {set number 1} {$number <= $count} {incr number} {
        if {$number > 1} $step
        batch_picture [file rootname $path]-[format %0${digits}d $number][file extension $path]
    }
}

proc viewer::batch_picture {path} {
    variable option
    variable batch_failures
    variable batch_done
    timing_start
    draw_now
    timing_part {first frame}
    set failed [catch { capture } captured]
    timing_part capture
    set message [expr {$failed ? $captured : [store_picture $captured $path $option(width) $option(height)]}]
    timing_part write
    incr batch_done
    if {$message ne {}} {
        incr batch_failures
        progress_end
        puts stderr "viewer: [file nativename $path]: $message"
        return
    }
    progress_end
    puts [file nativename [file normalize $path]]
    flush stdout
    timing_tell $path
    progress $path
}

# ---- timings and progress ------------------------------------------------------------------------------------------

proc viewer::timing_start {} {
    variable batch_timing
    set batch_timing(at) [clock microseconds]
}

# Ends a part; the next begins.
proc viewer::timing_part {name} {
    variable batch_timing
    set now [clock microseconds]
    set batch_timing($name) [expr {($now - $batch_timing(at)) / 1000.0}]
    set batch_timing(at) $now
}

proc viewer::timing_tell {path} {
    variable option
    variable batch_timing
    if {!$option(timings)} return
    set parts {}
    foreach name {load {first frame} capture write} {
        if {[info exists batch_timing($name)]} { lappend parts [format "%s %.1f ms" $name $batch_timing($name)] }
    }
    puts stderr "timings [file tail $path]: [join $parts {, }]"
    # The next picture of the same scene is not loaded again.
    unset -nocomplain batch_timing(load)
}

# One line that is written over, and only where somebody looks at it.
proc viewer::progress {path} {
    variable shows_progress
    variable batch_done
    variable batch_wanted
    if {!$shows_progress || $batch_wanted < 2} return
    puts -nonewline stderr "\r$batch_done of $batch_wanted  [file tail $path]\033\[K"
    flush stderr
}

proc viewer::progress_end {} {
    variable shows_progress
    if {$shows_progress} {
        puts -nonewline stderr "\r\033\[K"
        flush stderr
    }
}
