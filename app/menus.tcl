# The menus, made from the list of actions.
#
# Owns: nothing
# Offers: build
# Calls: actions, display, documents, keys, settings

namespace eval viewer::menus {
    namespace export build
    namespace ensemble create
    variable SCALES {Automatic 0 100% 1.0 125% 1.25 150% 1.5 200% 2.0}
    variable RATES {1 5 10 12 15 24 25 30 50 60}
    viewer::settings listen keys viewer::menus::build
}

proc viewer::menus::build {} {
    destroy .menu
    menu .menu -type menubar
    foreach {name label} [viewer::actions menus] {
        menu .menu.$name
        .menu add cascade -label $label -underline 0 -menu .menu.$name
    }
    foreach {menu kind id label key action} [viewer::actions table] {
        set options [list -label $label -accelerator [viewer::keys of $id]]
        switch $kind {
            - { .menu.$menu add separator }
            command { .menu.$menu add command {*}$options -command $action }
            check {
                lassign [viewer::actions switch_of $id $action] shown command
                .menu.$menu add checkbutton {*}$options -variable $shown -command $command
            }
            radio {
                lassign [viewer::actions switch_of $id $action] shown command
                .menu.$menu add radiobutton {*}$options -variable $shown -value [lindex $action 1] -command $command
            }
            menu {
                set fill [list viewer::menus::fill $id .menu.$menu.$id]
                menu .menu.$menu.$id -postcommand $fill
                .menu.$menu add cascade -label $label -menu .menu.$menu.$id
                {*}$fill
            }
        }
    }
    . configure -menu .menu
}

# ---- submenus ------------------------------------------------------------------------------------------------------

# Makes a submenu anew, by the procedure of its id.
proc viewer::menus::fill {id menu} {
    $menu delete 0 end
    fill_$id $menu
}

proc viewer::menus::fill_recent {menu} {
    set recent [viewer::settings get recent]
    foreach path $recent {
        # A menu takes no line ends; the folder tells two files of one name apart.
        set label "[file tail $path]   [file nativename [file dirname $path]]"
        $menu add command -label [string map {\n { }} $label] -command [list viewer::documents open_file open $path]
    }
    if {[llength $recent] == 0} {
        $menu add command -label "Nothing yet" -state disabled
        return
    }
    $menu add separator
    $menu add command -label "Forget these" -command {viewer::settings keep recent {}}
}

proc viewer::menus::fill_scale {menu} {
    variable SCALES
    foreach {label value} $SCALES {
        $menu add radiobutton -label $label -value $value -variable [viewer::settings name_of scale] \
            -command {viewer::settings changed scale}
    }
}

proc viewer::menus::fill_lod {menu} {
    for {set level 0} {$level <= 6} {incr level} {
        set label [expr {$level == 0 ? "0 (flat)" : $level}]
        $menu add radiobutton -label $label -value $level -variable [viewer::display name_of lod] \
            -command {viewer::display lod_changed}
    }
}

proc viewer::menus::fill_rate {menu} {
    variable RATES
    foreach rate $RATES {
        $menu add radiobutton -label $rate -value $rate -variable [viewer::settings name_of rate] \
            -command {viewer::settings changed rate}
    }
}
