# The menus, made from the list of commands.

proc viewer::build_menus {} {
    variable COMMANDS
    variable MENUS
    destroy .menu
    menu .menu -type menubar
    foreach {name label} $MENUS {
        menu .menu.$name
        .menu add cascade -label $label -underline 0 -menu .menu.$name
    }
    foreach {menu kind id label key action} $COMMANDS {
        set options [list -label $label -accelerator [key_of $id]]
        switch $kind {
            - { .menu.$menu add separator }
            command { .menu.$menu add command {*}$options -command $action }
            check {
                lassign $action variable script
                .menu.$menu add checkbutton {*}$options -variable ::viewer::$variable -command $script
            }
            radio {
                lassign $action variable value script
                .menu.$menu add radiobutton {*}$options -variable ::viewer::$variable -value $value -command $script
            }
            menu {
                menu .menu.$menu.$id -postcommand [list $action .menu.$menu.$id]
                .menu.$menu add cascade -label $label -menu .menu.$menu.$id
                $action .menu.$menu.$id
            }
        }
    }
    . configure -menu .menu
}

# ---- submenus ------------------------------------------------------------------------------------------------------

proc viewer::fill_recent {menu} {
    variable setting
    $menu delete 0 end
    foreach path $setting(recent) {
        # A menu takes no line ends; the folder tells two files of one name apart.
        set label "[file tail $path]   [file nativename [file dirname $path]]"
        $menu add command -label [string map {\n { }} $label] -command [list viewer::open_one open $path]
    }
    if {[llength $setting(recent)] == 0} {
        $menu add command -label "Nothing yet" -state disabled
        return
    }
    $menu add separator
    $menu add command -label "Forget these" -command {viewer::keep recent {}}
}

proc viewer::fill_scales {menu} {
    variable SCALES
    $menu delete 0 end
    foreach {label value} {Automatic 0 100% 1.0 125% 1.25 150% 1.5 200% 2.0} {
        $menu add radiobutton -label $label -value $value -variable ::viewer::chosen_scale \
            -command [list viewer::set_ui_scale $value]
    }
}

proc viewer::fill_lods {menu} {
    $menu delete 0 end
    for {set level 0} {$level <= 6} {incr level} {
        set label [expr {$level == 0 ? "0 (flat)" : $level}]
        $menu add radiobutton -label $label -value $level -variable ::viewer::lod -command viewer::lod_changed
    }
}

proc viewer::fill_rates {menu} {
    $menu delete 0 end
    foreach rate {1 5 10 12 15 24 25 30 50 60} {
        $menu add radiobutton -label $rate -value $rate -variable ::viewer::anim_rate -command viewer::rate_changed
    }
}

# ---- what the menus of View and Display do -------------------------------------------------------------------------

proc viewer::look {name} {
    aim $name
}

proc viewer::look_home {} {
    start_view
}

proc viewer::free_changed {} {
    variable free
    set_free $free
    keep free $free
}

proc viewer::mode_changed {} {
    variable mouse_mode
    set_mouse_mode $mouse_mode
    keep mode $mouse_mode
}

proc viewer::show_flag {name} {
    variable flag
    variable setting
    sorvel display $name $flag($name)
    set shown $setting(display)
    dict set shown $name $flag($name)
    keep display $shown
    draw_soon
}

# Takes what the library shows into the menus.
proc viewer::read_flags {} {
    variable flag
    variable lod
    variable FLAGS
    foreach name $FLAGS { set flag($name) [expr {[ask display $name] eq "on"}] }
    set level [string trim [ask display lod]]
    if {[string is integer -strict $level]} { set lod $level }
}

# Each time draws the textures of the models in the scene in once more: the library has no way back but a reload.
proc viewer::draw_textures_in {} {
    sorvel display smooth on
    draw_soon
}

proc viewer::lod_changed {} {
    variable lod
    sorvel display lod $lod
    keep lod $lod
    draw_soon
}

proc viewer::change_lod {by} {
    variable lod
    set lod [expr {max(0, min(6, $lod + $by))}]
    lod_changed
}
