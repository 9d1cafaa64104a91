# The keys: which belongs to which action, and what pressing one does where the keyboard is.
#
# Owns: bound_events
# Offers: of, bind_all, bind_fields, owner, name_of_key, set_key
# Calls: actions, settings, view

namespace eval viewer::keys {
    namespace export of bind_all bind_fields owner name_of_key set_key
    namespace ensemble create
    variable bound_events {}    ;# as the keys are now

    # Keys whose names differ from their keysyms; some lie in two places.
    variable KEYSYMS {+ {plus equal KP_Add} - {minus KP_Subtract} . {period KP_Decimal} \] bracketright \[ bracketleft
        Space space , comma}
    # Widgets in which letters are typed, and those that have a use of their own for arrows and the space bar.
    variable TYPING_CLASSES {TEntry Entry TSpinbox Spinbox TCombobox Text}
    variable STEERED_CLASSES {Treeview TScale TNotebook TButton TCheckbutton TRadiobutton TMenubutton Listbox}
    variable STEERING_KEYS {space Left Right Up Down Home End Delete}
    viewer::settings listen keys viewer::keys::bind_all
}

# ---- whose key -----------------------------------------------------------------------------------------------------

# The key of an action: the user's own, or the one of the list.
proc viewer::keys::of {wanted} {
    set own [viewer::settings get keys]
    if {[dict exists $own $wanted]} { return [dict get $own $wanted] }
    foreach {menu kind id label key action} [viewer::actions table] {
        if {$id eq $wanted && $kind ne "-"} { return $key }
    }
    return {}
}

# The action that a key belongs to, or nothing.
proc viewer::keys::owner {key} {
    if {$key eq {}} { return {} }
    foreach {menu kind id label original action} [viewer::actions table] {
        if {$kind ni {- menu} && [of $id] eq $key} { return $id }
    }
    return {}
}

# Gives an action a key; the one that had it before has none then.
proc viewer::keys::set_key {id key} {
    set own [viewer::settings get keys]
    set other [owner $key]
    if {$other ni [list {} $id]} { dict set own $other {} }
    dict set own $id $key
    viewer::settings keep keys $own
}

# ---- their names ---------------------------------------------------------------------------------------------------

# The events of a key such as "Ctrl+Shift+O". None for a text that names no key.
proc viewer::keys::events_of_key {key} {
    variable KEYSYMS
    if {$key eq {}} { return {} }
    set modifiers {}
    while {[regexp {^(Ctrl|Shift|Alt)\+(.+)$} $key -> modifier key]} {
        append modifiers [dict get {Ctrl Control- Shift Shift- Alt Alt-} $modifier]
    }
    set names [list $key]
    if {[dict exists $KEYSYMS $key]} {
        set names [dict get $KEYSYMS $key]
    } elseif {[regexp {^[A-Za-z]$} $key]} {
        set names [expr {[string match *Shift* $modifiers] ? [string toupper $key] : [string tolower $key]}]
    }
    return [lmap name $names { expr {[regexp {^\w+$} $name] ? "<${modifiers}Key-$name>" : [continue]} }]
}

# The name of the key that was pressed with that state of the others.
proc viewer::keys::name_of_key {keysym state} {
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

# ---- pressing them -------------------------------------------------------------------------------------------------

# Ctrl+A in a field: elsewhere it is the system's key for the beginning of the line.
proc viewer::keys::bind_fields {} {
    foreach class {TEntry TCombobox TSpinbox Entry Spinbox} {
        bind $class <Control-a> { %W selection range 0 end; break }
    }
}

# Binds every key to its action, and takes away those that were bound before.
proc viewer::keys::bind_all {} {
    variable bound_events
    foreach event $bound_events { bind . $event {} }
    set bound_events {}
    foreach {menu kind id label key action} [viewer::actions table] {
        if {$kind in {- menu}} continue
        foreach event [events_of_key [of $id]] {
            if {[catch { bind . $event [list viewer::keys::pressed $id %W %K %s] }]} continue
            lappend bound_events $event
        }
    }
}

proc viewer::keys::pressed {id widget keysym state} {
    variable TYPING_CLASSES
    variable STEERED_CLASSES
    variable STEERING_KEYS
    if {$keysym eq "Escape"} { viewer::view take_keyboard }
    set class [expr {[winfo exists $widget] ? [winfo class $widget] : {}}]
    set control [expr {$state & 4}]
    if {!$control && $class in $TYPING_CLASSES && ![regexp {^F\d+$} $keysym]} return
    if {$control && $class in $TYPING_CLASSES && $keysym in {a A Left Right}} return
    if {!$control && $class in $STEERED_CLASSES && $keysym in $STEERING_KEYS
        && !($class eq "Treeview" && $keysym in {Delete space})} return
    viewer::actions invoke $id
}
