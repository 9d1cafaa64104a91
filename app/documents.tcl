# Opening, adding, reloading and saving, as the menus offer them.

namespace eval viewer {
    variable PICTURE_QUESTION "There is a picture of that name already. Replace it?"
}

# ---- opening -------------------------------------------------------------------------------------------------------

# The first file opens, the others are added.
proc viewer::open_files {files} {
    set verb open
    foreach file $files {
        if {[open_one $verb $file]} { set verb add }
    }
    if {[llength $files] > 1 && $verb eq "add"} start_view
}

# Opens ("open") or adds ("add") a model or a scene list, whichever the file is, and tells how it went. 1, or 0 with the
# scene as it was.
proc viewer::open_one {verb path} {
    set path [whole_path $path]
    if {$verb eq "open" && ![may_lose Open]} { return 0 }
    set loaded [load_scene $verb $path]
    if {$loaded eq {}} {
        tell_failure [list viewer::open_one $verb $path]
        watch_scene
        return 0
    }
    hide_notice
    remember_recent $path
    if {$verb eq "open"} {
        stop_playing
        clear_range
        start_view
    }
    say_loaded "[file tail $path] [expr {$verb eq "open" ? "opened" : "added"}]" $loaded
    scene_changed [expr {$verb eq "open"}]
    return 1
}

# What a file names and could not be had is no failure, but worth a word.
proc viewer::say_loaded {text loaded} {
    set problems [dict get $loaded problems]
    if {[llength $problems] > 0} {
        set first [lindex $problems 0]
        append text ", but for [llength $problems] lines: [dict get $first text] ([file tail [dict get $first file]]"
        if {[dict get $first line] > 0} { append text ", line [dict get $first line]" }
        append text )
    }
    say_status $text
}

# What follows every change of what is in the scene. A new one begins with its first model selected.
proc viewer::scene_changed {{is_new 0}} {
    variable scene
    variable scene_list
    set names [expr {$scene_list eq {} ? {} : [list [file tail $scene_list]]}]
    foreach model $scene {
        if {[dict get $model row] == 0} { lappend names [file tail [dict get $model file]] }
    }
    wm title . [expr {[llength $names] > 0 ? "[join [lrange $names 0 2] {, }] - pelt" : "pelt"}]
    show_player
    refresh_panels $is_new
    watch_scene
    draw_soon
}

# Whether edits that a load would throw away may go. Asked only where there are any.
proc viewer::may_lose {doing} {
    commit_fields
    set changes [unsaved_changes]
    if {$changes == 0} { return 1 }
    set text "[expr {$changes == 1 ? "One change is" : "$changes changes are"}] not in the model's file"
    return [ask_yes "Unsaved changes" "$text and will be lost." "$doing anyway"]
}

# ---- reloading -----------------------------------------------------------------------------------------------------

# Reads every file of the scene again. What a person has made of it stays: view, places, selection, time.
proc viewer::reload_scene {} {
    variable scene
    if {[llength $scene] == 0 || ![may_lose Reload]} return
    set loaded [load_scene reload]
    if {$loaded eq {}} {
        tell_failure viewer::reload_scene
        watch_scene
        return
    }
    hide_notice
    say_loaded "Loaded again" $loaded
    scene_changed
}

# ---- dialogs -------------------------------------------------------------------------------------------------------

proc viewer::choose_model {verb} {
    set path [tk_getOpenFile -title [expr {$verb eq "open" ? "Open" : "Add"}] \
        -initialdir [folder_to_start_in] \
        -filetypes {{Models {.mod .MOD}} {{Scene lists} {.scene .anim .txt}} {{All files} *}}]
    if {$path ne {}} { open_one $verb $path }
}

proc viewer::choose_scene_list {} {
    set path [tk_getOpenFile -title "Open scene list" -initialdir [folder_to_start_in] \
        -filetypes {{{Scene lists} {.scene .anim .txt}} {{All files} *}}]
    if {$path ne {}} { open_one open $path }
}

proc viewer::folder_to_start_in {} {
    variable setting
    return [expr {[file isdirectory $setting(folder)] ? $setting(folder) : [pwd]}]
}

proc viewer::choose_picture {ending} {
    variable scene
    variable PICTURE_QUESTION
    set name [expr {[llength $scene] > 0 ? [dict get [lindex $scene 0] name] : "picture"}]
    set path [tk_getSaveFile -title "Save picture" -defaultextension $ending -initialfile $name$ending \
        -initialdir [folder_to_start_in] -confirmoverwrite 0 \
        -filetypes [list [list "[string toupper [string range $ending 1 end]] pictures" $ending] {{All files} *}]]
    if {$path eq {}} return
    # The dialog may still lie over the view.
    update
    if {[string tolower [file extension $path]] ni $::viewer::PICTURE_ENDINGS} { append path $ending }
    # Asked here and not by the dialog, which does not know the ending.
    if {[file exists $path] && ![ask_yes [file tail $path] $PICTURE_QUESTION Replace]} return
    set problem [save_picture $path]
    if {$problem eq {}} {
        say_status "[file tail $path] saved"
    } else {
        tell_notice $problem "The picture could not be saved"
    }
}

# ---- watching ------------------------------------------------------------------------------------------------------

proc viewer::watch_changed {} {
    variable watches
    keep watch $watches
    watch_scene
    say_status [expr {$watches ? "The scene follows its files" : "The scene no longer follows its files"}]
}
