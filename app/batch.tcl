# Pictures without a window that anyone sees: ./viewer --output and --contact-sheet.
#
# Each run stands alone: it reads no settings and leaves nothing behind but its pictures. A model that fails is told on
# standard error and the others are done all the same.
#
# Owns: nothing
# Offers: run
# Calls: files, options, pictures, report, scene, sheet, stage, timeline, view

namespace eval viewer::batch {
    namespace export run
    namespace ensemble create
}

proc viewer::batch::run {files} {
    viewer::report begin
    viewer::stage build
    set output [viewer::options get output]
    if {[viewer::options given output] && [viewer::options names_a_folder $output]
        && [catch { file mkdir $output } message]} {
        viewer::options die "the directory $output could not be made: $message" 1
    }
    plan $files
    if {[viewer::options given output]} {
        if {[viewer::options get animate] ne {}} {
            scene_list [viewer::options get animate]
        } elseif {[viewer::options names_a_folder $output]} {
            each_model $files
        } else {
            together $files
        }
    }
    if {[viewer::options given contact-sheet]} { viewer::sheet make $files }
    viewer::files remove_private_folder
    exit [viewer::report status]
}

proc viewer::batch::plan {files} {
    set models [expr {[viewer::options names_a_folder [viewer::options get output]] ? max(1, [llength $files]) : 1}]
    set wanted [expr {[viewer::options given output] ? $models * [pictures_of_a_scene] : 0}]
    if {[viewer::options given contact-sheet]} { incr wanted [llength $files] }
    viewer::report expect $wanted
}

proc viewer::batch::pictures_of_a_scene {} {
    if {[viewer::options get turntable] ne {}} { return [scan [viewer::options get turntable] %d] }
    if {[viewer::options get frames] eq {}} { return 1 }
    set seconds [expr {[viewer::options get last] - [viewer::options get first]}]
    return [expr {int(floor($seconds * [viewer::options get rate] + 1e-6)) + 1}]
}

# ---- the scenes ----------------------------------------------------------------------------------------------------

# A picture, or a series, of each model by itself.
proc viewer::batch::each_model {files} {
    set taken {}
    foreach file $files {
        set name [file rootname [file tail $file]]
        set ending .png
        for {set number 2} {"$name$ending" in $taken} {incr number} {
            set name [file rootname [file tail $file]]-$number
        }
        lappend taken $name$ending
        if {[bring open $file]} { pictures [file join [viewer::options get output] $name$ending] }
    }
}

# All models in one scene.
proc viewer::batch::together {files} {
    set verb open
    foreach file $files {
        if {[bring $verb $file]} { set verb add }
    }
    if {$verb eq "add"} {
        viewer::view start
        pictures [viewer::options get output]
    }
}

proc viewer::batch::scene_list {file} {
    set path [viewer::options get output]
    if {[viewer::options names_a_folder $path]} { set path [file join $path [file rootname [file tail $file]].png] }
    if {[bring open $file]} { pictures $path }
}

# 1, or 0 after the reason was told.
proc viewer::batch::bring {verb file} {
    if {$verb eq "open"} { viewer::report timing_start }
    set loaded [viewer::scene bring $verb $file]
    viewer::report timing_part load
    if {$loaded eq {}} {
        viewer::report scene_failed
        return 0
    }
    if {$verb eq "open"} { viewer::view start }
    return 1
}

# ---- the pictures --------------------------------------------------------------------------------------------------

# The pictures of the scene that is open: one, or numbered ones round the upright axis or along the time.
proc viewer::batch::pictures {path} {
    set count [pictures_of_a_scene]
    if {[viewer::options get turntable] ne {}} {
        set step [list viewer::view turn_by [expr {360.0 / $count}] 0]
    } elseif {[viewer::options get frames] ne {}} {
        viewer::timeline set_rate [viewer::options get rate]
        viewer::timeline seek [viewer::options get first]
        set step [list viewer::timeline step 1]
    } else {
        picture $path
        return
    }
    set digits [expr {max(3, [string length $count])}]
    for {set number 1} {$number <= $count} {incr number} {
        if {$number > 1} $step
        picture [file rootname $path]-[format %0${digits}d $number][file extension $path]
    }
}

proc viewer::batch::picture {path} {
    viewer::report timing_start
    viewer::view draw_now
    viewer::report timing_part {first frame}
    set failed [catch { viewer::pictures capture } captured]
    viewer::report timing_part capture
    set message $captured
    if {!$failed} {
        set message [viewer::pictures store $captured $path [viewer::options get width] [viewer::options get height]]
    }
    viewer::report timing_part write
    viewer::report picture_done $path $message
}
