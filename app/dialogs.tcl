# What the menus ask before they do it: which file, which angles, which size, which colour, which name.
#
# Owns: nothing
# Offers: choose_model, choose_scene_list, choose_picture, ask_angles, ask_size, use_size, choose_background, ask_rename
# Calls: documents, edits, notices, numbers, options, pictures, questions, scene, selection, settings, status, view

namespace eval viewer::dialogs {
    namespace export choose_model choose_scene_list choose_picture ask_angles ask_size use_size choose_background \
        ask_rename
    namespace ensemble create
    variable PICTURE_QUESTION "There is a picture of that name already. Replace it?"
}

# ---- files ---------------------------------------------------------------------------------------------------------

proc viewer::dialogs::choose_model {verb} {
    set path [tk_getOpenFile -title [expr {$verb eq "open" ? "Open" : "Add"}] \
        -initialdir [folder_to_start_in] \
        -filetypes {{Models {.mod .MOD}} {{Scene lists} {.scene .anim .txt}} {{All files} *}}]
    if {$path ne {}} { viewer::documents open_file $verb $path }
}

proc viewer::dialogs::choose_scene_list {} {
    set path [tk_getOpenFile -title "Open scene list" -initialdir [folder_to_start_in] \
        -filetypes {{{Scene lists} {.scene .anim .txt}} {{All files} *}}]
    if {$path ne {}} { viewer::documents open_file open $path }
}

proc viewer::dialogs::folder_to_start_in {} {
    set folder [viewer::settings get folder]
    if {![file isdirectory $folder]} { return [pwd] }
    return $folder
}

proc viewer::dialogs::choose_picture {ending} {
    variable PICTURE_QUESTION
    set models [viewer::scene models]
    set name picture
    # Not chosen by expr, which would reckon with a name such as 0x10.
    if {[llength $models] > 0} { set name [dict get [lindex $models 0] name] }
    set path [tk_getSaveFile -title "Save picture" -defaultextension $ending -initialfile $name$ending \
        -initialdir [folder_to_start_in] -confirmoverwrite 0 \
        -filetypes [list [list "[string toupper [string range $ending 1 end]] pictures" $ending] {{All files} *}]]
    if {$path eq {}} return
    # The dialog may still lie over the view.
    update
    if {[string tolower [file extension $path]] ni [viewer::options picture_endings]} { append path $ending }
    # Asked here and not by the dialog, which does not know the ending.
    if {[file exists $path] && ![viewer::questions ask_yes [file tail $path] $PICTURE_QUESTION Replace]} return
    set problem [viewer::pictures save $path]
    if {$problem eq {}} {
        viewer::status say "[file tail $path] saved"
    } else {
        viewer::notices note $problem "The picture could not be saved"
    }
}

# ---- the view ------------------------------------------------------------------------------------------------------

proc viewer::dialogs::ask_angles {} {
    lassign [viewer::view angles] turn tilt
    set hint "Degrees about the upright axis, and tilt: 0 from above, -90 level."
    set answer [viewer::questions ask_values "View by angles" $hint \
        [list Turn [viewer::numbers short $turn] Tilt [viewer::numbers short $tilt]]]
    if {[llength $answer] != 2} return
    if {![viewer::numbers are [join $answer ,] 2]} {
        viewer::status say "Two numbers are wanted"
        return
    }
    viewer::view aim [viewer::numbers decimals [join $answer ,]]
}

# A picture of a size of its own inside the window, or one that follows the window again.
proc viewer::dialogs::ask_size {} {
    lassign [viewer::options size_limits] least most
    set hint "Width and height of the picture, $least to $most. Both 0: as large as the window."
    set answer [viewer::questions ask_values "Fixed size" $hint \
        [list Width [winfo width .view] Height [winfo height .view]]]
    if {[llength $answer] == 2} { use_size {*}$answer }
}

# Two numbers as somebody typed them.
proc viewer::dialogs::use_size {width height} {
    lassign [viewer::options size_limits] least most
    if {![regexp {^[0-9]{1,4}$} $width] || ![regexp {^[0-9]{1,4}$} $height]} {
        viewer::status say "Two whole numbers are wanted"
        return
    }
    lassign [scan "$width $height" "%d %d"] width height
    set is_none [expr {$width == 0 && $height == 0}]
    if {!$is_none && ($width < $least || $height < $least || $width > $most || $height > $most)} {
        viewer::status say "Width and height must be $least to $most"
        return
    }
    viewer::view fixed_size $width $height
}

proc viewer::dialogs::choose_background {} {
    set now [format #%02x%02x%02x {*}[lmap part [viewer::view background] { expr {round($part * 255)} }]]
    set chosen [tk_chooseColor -title "Background" -initialcolor $now]
    if {$chosen eq {}} return
    set rgb [lmap part [winfo rgb . $chosen] { format %.4f [expr {$part / 65535.0}] }]
    viewer::settings keep background $rgb
    viewer::view set_background $rgb
}

# ---- the scene -----------------------------------------------------------------------------------------------------

proc viewer::dialogs::ask_rename {} {
    set ids [viewer::selection models]
    if {[llength $ids] == 0} {
        viewer::status say "Nothing is selected"
        return
    }
    set id [lindex $ids 0]
    set name [dict get [viewer::scene model $id] name]
    set hint "The model's name in the scene; its file stays as it is."
    set answer [viewer::questions ask_values "Rename model" $hint [list Name $name]]
    if {[llength $answer] == 1} { viewer::edits rename_model $id [lindex $answer 0] }
}
