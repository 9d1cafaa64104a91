# Everything that can be done, by name: what it is called, its own key, what it does. The list itself stands in
# commands.tcl; the menus, the keys and the page about the keys are made from it.
#
# A row has six words: menu, kind, id, label, key, what it does. A "command" runs that. A "check" switches a setting
# ("setting") or something that is shown ("flag"), whose name is its id. A "radio" gives a setting a value. A "menu" is
# filled by the menus, and "-" is a line between them.
#
# Owns: rows, titles
# Offers: take, table, menus, label, invoke, switch_of
# Calls: display, settings

namespace eval viewer::actions {
    namespace export take table menus label invoke switch_of
    namespace ensemble create
    variable rows {}
    variable titles {}    ;# of the menus: name and label
}

# Takes over the menus and the rows in them.
proc viewer::actions::take {menus list} {
    variable rows
    variable titles
    set titles $menus
    set rows $list
}

proc viewer::actions::table {} {
    variable rows
    return $rows
}

proc viewer::actions::menus {} {
    variable titles
    return $titles
}

proc viewer::actions::label {wanted} {
    variable rows
    foreach {menu kind id label key action} $rows {
        if {$id eq $wanted} { return [string trimright $label .] }
    }
    return $wanted
}

# Does what the menu item of that name does.
proc viewer::actions::invoke {wanted} {
    variable rows
    foreach {menu kind id label key action} $rows {
        if {$id ne $wanted} continue
        switch $kind {
            command { uplevel #0 $action }
            check {
                if {$action eq "flag"} { viewer::display toggle $id } else {
                    viewer::settings keep $id [expr {![viewer::settings get $id]}]
                }
            }
            radio { viewer::settings keep {*}$action }
        }
        return
    }
}

# What a widget needs for a check or a radio: the variable that it shows and the command to call when it was used.
proc viewer::actions::switch_of {id action} {
    if {$action eq "flag"} { return [list [viewer::display name_of $id] [list viewer::display flag_changed $id]] }
    set name [expr {$action eq "setting" ? $id : [lindex $action 0]}]
    return [list [viewer::settings name_of $name] [list viewer::settings changed $name]]
}
