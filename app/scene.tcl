# What is in the scene: the models that were opened or added, in order, or the rows of a scene list. The library gives
# only ids, which change at every load, so the names and files are remembered here.

namespace eval viewer {
    variable scene {}            ;# a list of dicts: id, path, name (as the library has it), placement
    variable scene_list {}       ;# the scene list that is open, or nothing
    variable failure {}          ;# the latest failure: title, text, file, line, path (the file that was asked for)
    variable unit_per_pixel 1.0  ;# of the world, at zoom 1
    variable view_narrow 1       ;# pixels of the view's narrow side, when that was measured
    variable fixed_picture {}    ;# width and height of the picture, where it does not follow the window
    variable scene_size 0.0      ;# largest extent of a model in the scene
    variable SPARE 1.05          ;# of the narrow side, that the library shows of the largest model
    variable selection_hook {}   ;# a command to call when the library's selection was disturbed
    variable REST_PLACE {move {0 0 0} scale {1 1 1} turn {0 0 0}}
}

# ---- loading -------------------------------------------------------------------------------------------------------

# Opens or adds a model. Its id, or 0 with "failure" set. A failed open leaves the scene empty, a failed add as it was.
proc viewer::load_model {verb path} {
    variable scene
    variable scene_list
    variable REST_PLACE
    set path [whole_path $path]
    if {$verb eq "open"} {
        set scene {}
        set scene_list {}
        forget_scale
    }
    # The library would empty the scene at an open; here too nothing of the old one stays.
    lassign [quietly sorvel file $verb [library_name [plain_path $path]]] id texts
    if {![string is integer -strict $id] || $id < 1} {
        set_failure $path [lindex $texts 0]
        return 0
    }
    lappend scene [dict create id $id path $path name [model_name [plain_path $path]] placement $REST_PLACE]
    return $id
}

# Opens a scene list. 1, or 0 with "failure" set and an empty scene. Its paths are taken from the folder it lies in.
proc viewer::load_scene_list {path} {
    variable scene
    variable scene_list
    variable anim_rate
    set path [whole_path $path]
    set scene {}
    set scene_list {}
    forget_scale
    set plain [plain_path $path]
    set before [pwd]
    if {[catch { cd [file dirname $plain] }]} {
        set_failure $path "could not find: $path"
        return 0
    }
    lassign [quietly sorvel animate open [file tail $plain]] count texts
    catch { cd $before }
    if {$count ne "1"} {
        set_failure $path [string map [names_of_rows $path] [lindex $texts 0]]
        return 0
    }
    set scene_list $path
    find_rows $path
    time_rate $anim_rate
    return 1
}

# The models of a scene list: their ids can only be looked for by name.
proc viewer::find_rows {path} {
    variable scene
    variable REST_PLACE
    foreach fields [lines_of_fields $path] {
        if {[llength $fields] < 5} continue
        lassign $fields folder file
        set name [model_name $file]
        set id [string trim [sorvel find model $name]]
        if {![string is integer -strict $id] || $id < 1} continue
        if {$id in [lmap model $scene { dict get $model id }]} continue
        set file [whole_path $file [whole_path [string map {\\ /} $folder] [file dirname $path]]]
        lappend scene [dict create id $id path $file name $name placement $REST_PLACE]
    }
}

# Pairs for the texts of the library: what becomes of a folder and a name with a backslash between them when backslashes
# are resolved, and the path.
proc viewer::names_of_rows {path} {
    set pairs {}
    foreach fields [lines_of_fields $path] {
        foreach {folder file} [lrange $fields 0 3] {
            set name $folder\\$file
            lappend pairs [subst -nocommands -novariables $name] [string map {\\ /} $name]
        }
    }
    return $pairs
}

# The name that the library gives to the model of a file.
proc viewer::model_name {path} {
    return [string tolower [regsub {\.[^.]*$} [file tail [string map {\\ /} $path]] {}]]
}

# The lines of a text file of ours, each a list of its fields; a field with blanks stands in double quotes.
proc viewer::lines_of_fields {path} {
    if {[catch { open [file normalize $path] r } channel]} { return {} }
    set lines [split [read $channel] \n]
    close $channel
    set result {}
    foreach line $lines {
        if {[string index $line 0] eq "#"} continue
        set fields [lmap {all quoted bare} [regexp -all -inline {"([^"]*)"|([^\s"]+)} $line] {
            expr {[string index $all 0] eq "\"" ? $quoted : $bare}
        }]
        if {[llength $fields] > 0} { lappend result $fields }
    }
    return $result
}

# ---- failures ------------------------------------------------------------------------------------------------------

# The library's text is "what (file: name, line: number)" when a file was being read, otherwise "what: name".
proc viewer::set_failure {path text} {
    variable failure
    set text [with_real_names $text]
    set file $path
    set line 0
    if {[regexp {^(.*) \(file: (.*), line: (\d+)\)$} $text -> what named line]} {
        set text $what
        # The rows of a scene list are named from its folder.
        set file [whole_path $named [file dirname $path]]
        # With the letters as the user has them, not as the library keeps them on Windows.
        if {$::tcl_platform(platform) eq "windows" && [string equal -nocase $file $path]} { set file $path }
    }
    if {$text eq {}} { set text "it could not be read" }
    if {![file exists $path]} {
        set text "there is no such file"
    } elseif {[file isdirectory $path]} {
        set text "that is a folder"
    } elseif {![file readable $path]} {
        set text "you have no permission to read it"
    }
    set failure [dict create title "[file tail $path] could not be loaded" text $text file $file line $line path $path]
}

# One line for standard error, in the form in which compilers tell theirs.
proc viewer::failure_line {} {
    variable failure
    set place [file nativename [dict get $failure file]]
    if {[dict get $failure line] > 0} { append place : [dict get $failure line] }
    return "$place: [regsub -all {\s+} [dict get $failure text] { }]"
}

# ---- asking --------------------------------------------------------------------------------------------------------

proc viewer::model_of_id {id} {
    variable scene
    foreach model $scene {
        if {[dict get $model id] == $id} { return $model }
    }
    return {}
}

# Changes what is remembered of a model.
proc viewer::set_model {id key value} {
    variable scene
    for {set index 0} {$index < [llength $scene]} {incr index} {
        set model [lindex $scene $index]
        if {[dict get $model id] == $id} {
            dict set model $key $value
            lset scene $index $model
        }
    }
}

# Makes one model the current one.
proc viewer::select_only {id} {
    sorvel select clear
    sorvel select model $id
}

proc viewer::layers_of {id} {
    quietly select_only $id
    return [regexp -all -inline {\S+} [ask get layer names]]
}

proc viewer::images_of {id} {
    return [lsort -unique [regexp -all -inline {\S+} [ask find images $id]]]
}

# Names of the child models that a model file has. No command tells them, so the file is read.
proc viewer::children_of {path} {
    if {[catch { open [file normalize $path] r } channel]} { return {} }
    set text [read $channel]
    close $channel
    set names {}
    foreach {all quoted bare} [regexp -all -inline -line {^[ \t]*child[ \t]+(?:"([^"\n]*)"|([^\s"]+))} $text] {
        lappend names $quoted$bare
    }
    return [lsort -unique $names]
}

# Every file that the scene was made of, as far as it can be told: models, their child models and images, clips.
proc viewer::files_of_scene {} {
    variable scene
    variable scene_list
    set files {}
    if {$scene_list ne {}} {
        lappend files $scene_list
        foreach fields [lines_of_fields $scene_list] {
            if {[llength $fields] < 5} continue
            lassign [lmap part $fields { string map {\\ /} $part }] folder file clip_folder clip
            lappend files [whole_path $clip [whole_path $clip_folder [file dirname $scene_list]]]
        }
    }
    foreach model $scene {
        lappend files {*}[files_of_model [dict get $model path] 0]
        foreach image [images_of [dict get $model id]] {
            lappend files [whole_path $image [file dirname [dict get $model path]]]
        }
    }
    return [lsort -unique [lmap file $files { expr {[file isfile $file] ? [file normalize $file] : [continue]} }]]
}

proc viewer::files_of_model {path depth} {
    set files [list $path]
    if {$depth > 8} { return $files }
    foreach child [children_of $path] {
        set file [whole_path $child.mod [file dirname $path]]
        if {$file ne $path && [file isfile $file]} { lappend files {*}[files_of_model $file [expr {$depth + 1}]] }
    }
    return $files
}

# The zoom at which all models are seen: the library fits its view to the largest one, wherever the others stand, and
# lets the scale be when the window changes.
proc viewer::fitting_zoom {} {
    variable scene
    variable scene_size
    variable selection_hook
    variable unit_per_pixel
    variable view_narrow
    variable SPARE
    set shown [expr {$unit_per_pixel * $view_narrow / $SPARE}]
    if {$shown <= 0 || $scene_size <= 0} { return 1.0 }
    if {[llength $scene] < 2} { return [expr {$scene_size / $shown}] }
    set middle [numbers [ask get centre]]
    set farthest 0.0
    foreach model $scene {
        quietly select_only [dict get $model id]
        set place [numbers [ask select centre]]
        if {[llength $place] != 3 || [llength $middle] != 3} continue
        set square 0.0
        foreach a $place b $middle { set square [expr {$square + ($a - $b) * ($a - $b)}] }
        set farthest [expr {max($farthest, sqrt($square))}]
    }
    if {$selection_hook ne {}} { {*}$selection_hook }
    return [expr {(2 * $farthest + $scene_size) / $shown}]
}

# ---- measuring -----------------------------------------------------------------------------------------------------

# Learns how much of the world a pixel shows, by shifting the picture and back. To be called after every load.
proc viewer::measure_view {} {
    variable unit_per_pixel
    variable view_narrow
    variable scene_size
    variable zoom
    variable SPARE
    set zoom [lindex [numbers [sorvel get zoom]] 0]
    lassign [numbers [sorvel get pan]] x y
    if {$zoom eq {} || $y eq {}} return
    sorvel set pan 0 0
    sorvel set view pan 1000 0
    # What this was computed from: the next command may come behind another size.
    set narrow [narrow_side]
    set shift [lindex [numbers [sorvel get pan]] 0]
    sorvel set pan $x $y
    if {![string is double -strict $shift] || $shift == 0 || $zoom <= 0} return
    set before $unit_per_pixel
    set unit_per_pixel [expr {abs($shift) / 1000 / $zoom}]
    set view_narrow $narrow
    # Only another scale comes from a fit of the library's own, which was to the size of now.
    if {abs($before - $unit_per_pixel) > 1e-4 * $unit_per_pixel} {
        set scene_size [expr {$unit_per_pixel * $narrow / $SPARE}]
    }
}

# The next measure takes the scale as that of a new scene.
proc viewer::forget_scale {} {
    variable unit_per_pixel
    set unit_per_pixel 0.0
}

proc viewer::narrow_side {} {
    variable fixed_picture
    lassign $fixed_picture width height
    if {$height eq {}} { lassign [list [winfo width .view] [winfo height .view]] width height }
    return [expr {min($width, $height)}]
}
