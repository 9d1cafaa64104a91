# Opening, adding, reloading, renaming and saving, as the menus offer them.

namespace eval viewer {
    variable wanted {}      ;# files of the scene that is wanted, also those that could not be loaded: dicts path, kind
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

# A file of the list of recent ones, whatever it is. Where the ending does not tell, the first row does: that of a scene
# list has five words.
proc viewer::open_any {path} {
    set ending [string tolower [file extension $path]]
    if {$ending eq ".scene" || ($ending ne ".mod" && [llength [lindex [lines_of_fields $path] 0]] >= 5)} {
        open_scene_list $path
    } else {
        open_one open $path
    }
}

# Opens ("open") or adds ("add") a model and tells how it went. 1 or 0.
proc viewer::open_one {verb path} {
    variable wanted
    set path [whole_path $path]
    if {$verb eq "open"} {
        set wanted {}
        stop_playing
    }
    set id [load_model $verb $path]
    if {$verb eq "open" || $id != 0} { lappend wanted [dict create path $path kind model] }
    if {$id == 0} {
        tell_failure [list viewer::open_one $verb $path]
    } else {
        hide_notice
        remember_recent $path
        if {$verb eq "open"} start_view
        say_status "[file tail $path] [expr {$verb eq "open" ? "opened" : "added"}]"
    }
    scene_changed
    return [expr {$id != 0}]
}

proc viewer::open_scene_list {path} {
    variable wanted
    set path [whole_path $path]
    stop_playing
    set wanted [list [dict create path $path kind list]]
    set good [load_scene_list $path]
    if {$good} {
        hide_notice
        remember_recent $path
        start_view
        say_status "[file tail $path] opened"
    } else {
        tell_failure [list viewer::open_scene_list $path]
    }
    clear_range
    scene_changed
    return $good
}

# What follows every change of what is in the scene.
proc viewer::scene_changed {} {
    variable wanted
    measure_view
    set names [lmap entry $wanted { file tail [dict get $entry path] }]
    wm title . [expr {[llength $names] > 0 ? "[join [lrange $names 0 2] {, }] - pelt" : "pelt"}]
    show_player
    refresh_panels
    watch_scene
    draw_soon
}

# ---- reloading -----------------------------------------------------------------------------------------------------

# Loads every file of the scene again. The view stays, and so do places that were given to models; a file that fails is
# told and the others stand. The library's own reload would empty the scene then.
proc viewer::reload_scene {} {
    variable wanted
    variable scene
    if {[llength $wanted] == 0} return
    set view [remember_view]
    set old $scene
    set failed 0
    if {[dict get [lindex $wanted 0] kind] eq "list"} {
        if {![load_scene_list [dict get [lindex $wanted 0] path]]} { incr failed }
    } else {
        set verb open
        foreach entry $wanted {
            if {[load_model $verb [dict get $entry path]]} { set verb add } else { incr failed }
        }
    }
    put_back_places $old
    scene_changed
    restore_view $view
    if {$failed} {
        tell_failure viewer::reload_scene
    } else {
        hide_notice
        say_status "Loaded again"
    }
}

# A model of the same file, counted from the first, gets the place that the old one had.
proc viewer::put_back_places {old} {
    variable scene
    variable REST_PLACE
    foreach model $scene {
        set index [lsearch -exact [lmap other $old { dict get $other path }] [dict get $model path]]
        if {$index < 0} continue
        set placement [dict get [lindex $old $index] placement]
        set old [lreplace $old $index $index]
        if {$placement ne $REST_PLACE} { put_model [dict get $model id] $placement }
    }
}

# ---- dialogs -------------------------------------------------------------------------------------------------------

proc viewer::choose_model {verb} {
    variable setting
    set path [tk_getOpenFile -title [expr {$verb eq "open" ? "Open model" : "Add model"}] \
        -initialdir [folder_to_start_in] -filetypes {{Models {.mod .MOD}} {{All files} *}}]
    if {$path ne {}} { open_one $verb $path }
}

proc viewer::choose_scene_list {} {
    set path [tk_getOpenFile -title "Open scene list" -initialdir [folder_to_start_in] \
        -filetypes {{{Scene lists} {.scene .anim .txt}} {{All files} *}}]
    if {$path ne {}} { open_scene_list $path }
}

proc viewer::folder_to_start_in {} {
    variable setting
    return [expr {[file isdirectory $setting(folder)] ? $setting(folder) : [pwd]}]
}

proc viewer::choose_picture {ending} {
    variable scene
    set name [expr {[llength $scene] > 0 ? [dict get [lindex $scene 0] name] : "picture"}]
    set path [tk_getSaveFile -title "Save picture" -defaultextension $ending -initialfile $name$ending \
        -initialdir [folder_to_start_in] \
        -filetypes [list [list "[string toupper [string range $ending 1 end]] pictures" $ending] {{All files} *}]]
    if {$path eq {}} return
    # The dialog may still lie over the view.
    update
    if {[string tolower [file extension $path]] ni $::viewer::PICTURE_ENDINGS} { append path $ending }
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
