# The pages about the keys and about the program. The page about the keys is made from the list of actions; a key is
# changed there by a double click.
#
# Owns: nothing
# Offers: show_keys, show_about
# Calls: actions, keys, library, notices, questions, settings, theme

namespace eval viewer::help {
    namespace export show_keys show_about
    namespace ensemble create
    namespace import ::viewer::theme::px
    viewer::settings listen keys viewer::help::show_all_keys
}

proc viewer::help::show_keys {} {
    destroy .keys
    toplevel .keys -padx [px 10] -pady [px 10] -highlightthickness 1 -highlightbackground [viewer::theme colour line]
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
    ttk::button .keys.original -text "Original keys" -command viewer::help::forget_keys
    grid .keys.table .keys.scroll -sticky nsew
    grid .keys.hint - -sticky w -pady [px 6]
    grid .keys.original - -sticky e
    grid rowconfigure .keys 0 -weight 1
    grid columnconfigure .keys 0 -weight 1
    foreach {name label} [viewer::actions menus] { .keys.table insert {} end -id menu:$name -text $label -open 1 }
    foreach {menu kind id label key action} [viewer::actions table] {
        if {$kind in {- menu}} continue
        .keys.table insert menu:$menu end -id $id -text [string trimright $label .] -values [list [viewer::keys of $id]]
    }
    .keys.table insert {} end -id mouse -text "Mouse in the view" -open 1
    foreach {what how} {"Turn (or shift, zoom)" "left drag" Shift "right drag" Zoom "wheel, middle drag"
        "Bring to the middle" "double click"} {
        .keys.table insert mouse end -text $what -values [list $how]
    }
    bind .keys.table <Double-Button-1> { viewer::help::wait_for_key [.keys.table identify row %x %y]; break }
    bind .keys <Escape> { destroy .keys }
    viewer::questions centre_over .keys
}

# The next key that is pressed belongs to that action.
proc viewer::help::wait_for_key {id} {
    if {$id eq {} || $id eq "mouse" || [string match menu:* $id] || ![.keys.table exists $id]} return
    show_all_keys
    .keys.table set $id key "press a key"
    bind .keys.table <Key> [list viewer::help::key_chosen $id %K %s]
    focus .keys.table
}

proc viewer::help::key_chosen {id keysym state} {
    if {[regexp {^(Control|Shift|Alt|Meta|Super|Caps)_} $keysym]} { return -code break }
    bind .keys.table <Key> {}
    if {$keysym eq "Escape"} {
        show_all_keys
    } else {
        set key [expr {$keysym eq "BackSpace" ? {} : [viewer::keys name_of_key $keysym $state]}]
        after idle [list viewer::help::choose_key $id $key]
    }
    return -code break
}

# Gives an action a key; one that had it before only loses it after a question.
proc viewer::help::choose_key {id key} {
    set other [viewer::keys owner $key]
    if {$other ni [list {} $id]} {
        set text "$key is the key of \"[viewer::actions label $other]\", which would have none then."
        if {![viewer::questions ask_yes "Keys" $text "Take it"]} {
            show_all_keys
            return
        }
    }
    viewer::keys set_key $id $key
    show_all_keys
}

proc viewer::help::forget_keys {} {
    set count [expr {[llength [viewer::settings get keys]] / 2}]
    if {$count == 0} return
    set text "Your own keys of $count commands will be forgotten."
    if {[viewer::questions ask_yes "Keys" $text "Original keys"]} { viewer::settings keep keys {} }
}

proc viewer::help::show_all_keys {} {
    if {![winfo exists .keys.table]} return
    foreach {menu kind id label key action} [viewer::actions table] {
        if {$kind ni {- menu}} { .keys.table set $id key [viewer::keys of $id] }
    }
}

proc viewer::help::show_about {} {
    viewer::notices note "A viewer and light editor for .mod models. Tcl/Tk [info patchlevel], library\
        [viewer::library path]. The settings are kept in [viewer::settings path]." "pelt"
}
