# The pages about the keys and about the program. The page about the keys is made from the list of commands; a key is
# changed there by a double click.

proc viewer::show_keys {} {
    variable COMMANDS
    variable MENUS
    destroy .keys
    toplevel .keys -padx [px 10] -pady [px 10] -highlightthickness 1 -highlightbackground $::viewer::COLOUR(line)
    wm title .keys Keys
    wm transient .keys .
    ttk::treeview .keys.table -columns {key} -height 22 -selectmode browse -yscrollcommand {.keys.scroll set}
    .keys.table heading #0 -text "What it does" -anchor w
    .keys.table heading key -text Key -anchor w
    .keys.table column #0 -width [px 320]
    .keys.table column key -width [px 130]
    ttk::scrollbar .keys.scroll -orient vertical -command {.keys.table yview}
    ttk::label .keys.hint -style Dim.TLabel \
        -text "Double click a row, then press its new key. Backspace leaves it without one, Escape as it is."
    ttk::button .keys.original -text "Original keys" -command viewer::original_keys
    grid .keys.table .keys.scroll -sticky nsew
    grid .keys.hint - -sticky w -pady [px 6]
    grid .keys.original - -sticky e
    grid rowconfigure .keys 0 -weight 1
    grid columnconfigure .keys 0 -weight 1
    foreach {name label} $MENUS { .keys.table insert {} end -id menu:$name -text $label -open 1 }
    foreach {menu kind id label key action} $COMMANDS {
        if {$kind in {- menu}} continue
        .keys.table insert menu:$menu end -id $id -text [string trimright $label .] -values [list [key_of $id]]
    }
    .keys.table insert {} end -id mouse -text "Mouse in the view" -open 1
    foreach {what how} {"Turn (or shift, zoom)" "left drag" Shift "right drag" Zoom "wheel, middle drag"
        "Bring to the middle" "double click"} {
        .keys.table insert mouse end -text $what -values [list $how]
    }
    bind .keys.table <Double-Button-1> { viewer::wait_for_key [.keys.table identify row %x %y]; break }
    bind .keys <Escape> { destroy .keys }
    centre_over .keys
}

# The next key that is pressed belongs to that command.
proc viewer::wait_for_key {id} {
    if {$id eq {} || $id eq "mouse" || [string match menu:* $id] || ![.keys.table exists $id]} return
    show_all_keys
    .keys.table set $id key "press a key"
    bind .keys.table <Key> [list viewer::key_chosen $id %K %s]
    focus .keys.table
}

proc viewer::key_chosen {id keysym state} {
    if {[regexp {^(Control|Shift|Alt|Meta|Super|Caps)_} $keysym]} { return -code break }
    bind .keys.table <Key> {}
    if {$keysym eq "Escape"} {
        show_all_keys
    } else {
        after idle [list viewer::choose_key $id [expr {$keysym eq "BackSpace" ? {} : [name_of_key $keysym $state]}]]
    }
    return -code break
}

# Gives a command a key; a command that had it before only loses it after a question.
proc viewer::choose_key {id key} {
    set other [command_of_key $key]
    if {$other ni [list {} $id]} {
        set text "$key is the key of \"[label_of_command $other]\", which would have none then."
        if {![ask_yes "Keys" $text "Take it"]} {
            show_all_keys
            return
        }
    }
    set_key $id $key
}

proc viewer::command_of_key {key} {
    variable COMMANDS
    foreach {menu kind id label own action} $COMMANDS {
        if {$key ne {} && $kind ni {- menu} && [key_of $id] eq $key} { return $id }
    }
    return {}
}

proc viewer::label_of_command {wanted} {
    variable COMMANDS
    foreach {menu kind id label own action} $COMMANDS {
        if {$id eq $wanted} { return [string trimright $label .] }
    }
    return $wanted
}

proc viewer::name_of_key {keysym state} {
    variable KEYSYMS
    set name $keysym
    foreach {shown names} $KEYSYMS {
        if {$keysym in $names} { set name $shown }
    }
    if {[string length $name] == 1} { set name [string toupper $name] }
    set modifiers {}
    foreach {bit word} {4 Ctrl+ 8 Alt+ 1 Shift+} {
        if {$state & $bit && !($bit == 1 && [string length $name] == 1 && ![string is alpha $name])} {
            append modifiers $word
        }
    }
    return $modifiers$name
}

# Gives a command a key; the command that had it before has none then.
proc viewer::set_key {id key} {
    variable setting
    set keys $setting(keys)
    set other [command_of_key $key]
    if {$other ni [list {} $id]} { dict set keys $other {} }
    dict set keys $id $key
    keep keys $keys
    keys_changed
}

proc viewer::original_keys {} {
    variable setting
    set count [expr {[llength $setting(keys)] / 2}]
    if {$count > 0 && [ask_yes "Keys" "Your own keys of $count commands will be forgotten." "Original keys"]} {
        keep keys {}
        keys_changed
    }
}

proc viewer::keys_changed {} {
    bind_keys
    build_menus
    show_all_keys
}

proc viewer::show_all_keys {} {
    variable COMMANDS
    if {![winfo exists .keys.table]} return
    foreach {menu kind id label key action} $COMMANDS {
        if {$kind ni {- menu}} { .keys.table set $id key [key_of $id] }
    }
}

proc viewer::show_about {} {
    tell_notice "A viewer and light editor for .mod models. Tcl/Tk [info patchlevel], library $::viewer::library_path.\
        The settings are kept in [settings_path]." "pelt"
}
