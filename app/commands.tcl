# Everything that can be done, in one list. The menus, the keys and the page about the keys are made from it.

namespace eval viewer {
    variable flag                ;# what is shown, 0 or 1 by the name of the flag
    variable lod 1
    variable bound_events         ;# of the keys as they are now
    variable shows_side 1
    variable shows_axes 1
    variable watches 0
    variable loops 1
    variable chosen_scale 0

    # menu, kind, id, label, key, what it does. A check has its variable in front of what it does, a radio its variable
    # and value; "flag" stands for what all flags do, and a "menu" is filled elsewhere.
    variable COMMANDS {
        file    command open         "Open..."                        Ctrl+O        {viewer::choose_model open}
        file    menu    recent       "Open recent"                    {}            viewer::fill_recent
        file    command add          "Add..."                         Ctrl+Shift+O  {viewer::choose_model add}
        file    -       -            -                                -             -
        file    command reload       "Reload"                         F5            viewer::reload_scene
        file    check   watch        "Reload when a file changes"     F6            {watches viewer::watch_changed}
        file    command rename       "Rename model..."                F2            viewer::ask_rename
        file    -       -            -                                -             -
        file    command save_png     "Save picture as PNG..."         Ctrl+S        {viewer::choose_picture .png}
        file    command save_tga     "Save picture as TGA..."         Ctrl+Shift+S  {viewer::choose_picture .tga}
        file    -       -            -                                -             -
        file    command quit         "Quit"                           Ctrl+Q        viewer::quit

        view    command north        "North"                          1             {viewer::look north}
        view    command south        "South"                          2             {viewer::look south}
        view    command east         "East"                           3             {viewer::look east}
        view    command west         "West"                           4             {viewer::look west}
        view    command down         "From above"                     5             {viewer::look down}
        view    command up           "From below"                     6             {viewer::look up}
        view    command home         "Start view"                     Home          viewer::look_home
        view    command angles       "By angles..."                   A             viewer::ask_angles
        view    check   free         "Free rotation"                  V             {free viewer::free_changed}
        view    -       -            -                                -             -
        view    command fit          "Fit"                            F             viewer::fit
        view    command centre       "Centre"                         .             viewer::centre
        view    command zoom_in      "Zoom in"                        +             {viewer::zoom_by 0.8}
        view    command zoom_out     "Zoom out"                       -             {viewer::zoom_by 1.25}
        view    -       -            -                                -             -
        view    radio   mode_turn    "Left button turns"              Ctrl+1        {
            mouse_mode turn viewer::mode_changed
        }
        view    radio   mode_pan     "Left button shifts"             Ctrl+2        {
            mouse_mode pan viewer::mode_changed
        }
        view    radio   mode_zoom    "Left button zooms"              Ctrl+3        {
            mouse_mode zoom viewer::mode_changed
        }
        view    -       -            -                                -             -
        view    command size         "Fixed size..."                  {}            viewer::ask_size
        view    command background   "Background colour..."           {}            viewer::choose_background
        view    check   side         "Panels"                         F9            {shows_side viewer::side_changed}
        view    check   axes         "Axes and scale"                 F8            {shows_axes viewer::axes_changed}
        view    menu    scale        "Size of text"                   {}            viewer::fill_scales

        display check   triangles    "Surfaces"                       S             flag
        display check   lines        "Lines"                          E             flag
        display check   curves       "Curved surfaces"                C             flag
        display check   points       "Points with numbers"            P             flag
        display check   normals      "Normals"                        N             flag
        display check   skeleton     "Skeleton"                       K             flag
        display -       -            -                                -             -
        display check   wireframe    "Wireframe"                      W             flag
        display check   quadlines    "Diagonals in wireframe"         Q             flag
        display check   backfaces    "Backs of single-sided layers"   B             flag
        display check   mirror       "Mirrored halves"                M             flag
        display -       -            -                                -             -
        display check   textures     "Textures"                       T             flag
        display check   transparency "Transparency"                   Y             flag
        display check   reflect      "Reflections"                    R             flag
        display check   gouraud      "Colours of points"              G             flag
        display check   lighting     "Light"                          L             flag
        display -       -            -                                -             -
        display check   pnfilter     "Every triangle curved"          U             flag
        display command smooth       "Draw textures in by half a texel" {}          viewer::draw_textures_in
        display menu    lod          "Level of detail"                {}            viewer::fill_lods
        display command lod_more     "Finer curves"                   \]            {viewer::change_lod 1}
        display command lod_less     "Coarser curves"                 \[            {viewer::change_lod -1}

        animate command animate      "Open scene list..."             Ctrl+Shift+A  viewer::choose_scene_list
        animate -       -            -                                -             -
        animate command play         "Play or pause"                  Space         viewer::play_or_pause
        animate command next         "Next step"                      Right         {viewer::step 1}
        animate command prev         "Previous step"                  Left          {viewer::step -1}
        animate command first        "To the start"                   Ctrl+Left     viewer::to_start
        animate -       -            -                                -             -
        animate menu    rate         "Steps per second"               {}            viewer::fill_rates
        animate check   loop         "Loop"                           Ctrl+L        {loops viewer::loop_changed}
        animate command range_in     "Play from here"                 I             {viewer::mark_range first}
        animate command range_out    "Play up to here"                O             {viewer::mark_range last}
        animate command range_all    "Play all"                       Shift+I       viewer::clear_range

        select  command all          "All"                            Ctrl+A        viewer::select_all
        select  command clear        "Clear"                          Escape        viewer::select_none
        select  -       -            -                                -             -
        select  command place        "Move, scale, turn..."           Ctrl+M        viewer::show_place
        select  command pancake      "Lay flat (pancake)"             {}            viewer::pancake
        select  command delete       "Delete"                         Delete        viewer::delete_selected

        help    command keys         "Keys"                           F1            viewer::show_keys
        help    command about        "About"                          {}            viewer::show_about
    }
    # The flags all do the same.
    set COMMANDS [lmap {menu kind id label key action} $COMMANDS {
        if {$action eq "flag"} { set action [list flag($id) [list viewer::show_flag $id]] }
        list $menu $kind $id $label $key $action
    }]
    set COMMANDS [concat {*}$COMMANDS]
    unset menu kind id label key action
    variable MENUS {file File view View display Display animate Animate select Select help Help}

    # Keys whose names differ from their keysyms; some lie in two places.
    variable KEYSYMS {+ {plus equal KP_Add} - {minus KP_Subtract} . {period KP_Decimal} \] bracketright \[ bracketleft
        Space space , comma}
    # Widgets in which letters are typed, and those that have a use of their own for arrows and the space bar.
    variable TYPING_CLASSES {TEntry Entry TSpinbox Spinbox TCombobox Text}
    variable STEERED_CLASSES {Treeview TScale TNotebook TButton TCheckbutton TRadiobutton TMenubutton Listbox}
    variable STEERING_KEYS {space Left Right Up Down Home End Delete}
}

# ---- keys ----------------------------------------------------------------------------------------------------------

# The key of a command: the user's own, or the one of the list.
proc viewer::key_of {id} {
    variable setting
    variable COMMANDS
    if {[dict exists $setting(keys) $id]} { return [dict get $setting(keys) $id] }
    foreach {menu kind name label key action} $COMMANDS {
        if {$name eq $id && $kind ne "-"} { return $key }
    }
    return {}
}

# The events of a key such as "Ctrl+Shift+O". None for a text that names no key.
proc viewer::events_of_key {key} {
    variable KEYSYMS
    if {$key eq {}} { return {} }
    set modifiers {}
    while {[regexp {^(Ctrl|Shift|Alt)\+(.+)$} $key -> modifier key]} {
        append modifiers [dict get {Ctrl Control- Shift Shift- Alt Alt-} $modifier]
    }
    set names [expr {[dict exists $KEYSYMS $key] ? [dict get $KEYSYMS $key] : [list $key]}]
    if {[regexp {^[A-Za-z]$} $key]} {
        set names [expr {[string match *Shift* $modifiers] ? [string toupper $key] : [string tolower $key]}]
    }
    return [lmap name $names { expr {[regexp {^\w+$} $name] ? "<${modifiers}Key-$name>" : [continue]} }]
}

# Ctrl+A in a field: elsewhere it is the system's key for the beginning of the line.
proc viewer::bind_fields {} {
    foreach class {TEntry TCombobox TSpinbox Entry Spinbox} {
        bind $class <Control-a> { %W selection range 0 end; break }
    }
}

# Binds every key to its command, and takes away those that were bound before.
proc viewer::bind_keys {} {
    variable COMMANDS
    variable bound_events
    if {[info exists bound_events]} {
        foreach event $bound_events { bind . $event {} }
    }
    set bound_events {}
    foreach {menu kind id label key action} $COMMANDS {
        if {$kind in {- menu}} continue
        foreach event [events_of_key [key_of $id]] {
            if {[catch { bind . $event [list viewer::key_pressed $id %W %K %s] }]} continue
            lappend bound_events $event
        }
    }
}

proc viewer::key_pressed {id widget keysym state} {
    variable TYPING_CLASSES
    variable STEERED_CLASSES
    variable STEERING_KEYS
    if {$keysym eq "Escape"} focus_view
    set class [expr {[winfo exists $widget] ? [winfo class $widget] : {}}]
    set control [expr {$state & 4}]
    if {!$control && $class in $TYPING_CLASSES && ![regexp {^F\d+$} $keysym]} return
    if {$control && $class in $TYPING_CLASSES && $keysym in {a A Left Right}} return
    if {!$control && $class in $STEERED_CLASSES && $keysym in $STEERING_KEYS
        && !($class eq "Treeview" && $keysym in {Delete space})} return
    invoke_command $id
}

# Does what the menu item of that name does.
proc viewer::invoke_command {id} {
    variable COMMANDS
    foreach {menu kind name label key action} $COMMANDS {
        if {$name ne $id} continue
        switch $kind {
            command { uplevel #0 $action }
            check {
                lassign $action variable script
                set ::viewer::$variable [expr {![set ::viewer::$variable]}]
                uplevel #0 $script
            }
            radio {
                lassign $action variable value script
                set ::viewer::$variable $value
                uplevel #0 $script
            }
        }
        return
    }
}
