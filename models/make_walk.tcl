# walk.scene: a figure that walks, with a lantern in its hand. The figure has a skeleton; the rings around its knees,
# elbows and hips are shared between two joints by weights, its waist by a blend group, and stars that are a child model
# circle around its head. walk.clip is the main clip; it plays wave.clip, in which the free hand waves.

# ---- a model with a skeleton ---------------------------------------------------------------------------------------

# Points stand in a file in the order of the joints that own them, so they are gathered by owner first.
proc figure_begin {} {
    global owned joint_lines blend_lines faces
    set owned [dict create]
    set joint_lines {}
    set blend_lines {}
    set faces {}
}

# name is what a point belongs to: a joint, or the name of a blend group.
proc figure_point {owner place normal weight} {
    global owned
    dict lappend owned $owner [list $place $normal $weight]
    return [list $owner [expr {[llength [dict get $owned $owner]] - 1}]]
}

# A tube of six-cornered rings from top to bottom. Each ring: {owner weight centre half-width half-depth}.
proc tube {layer rings} {
    global faces pi
    set sides 8
    set grid {}
    set count [llength $rings]
    for {set i 0} {$i < $count} {incr i} {
        lassign [lindex $rings $i] owner weight centre width depth
        lassign $centre cx cy cz
        set row {}
        for {set j 0} {$j < $sides} {incr j} {
            set a [expr {2 * $pi * $j / $sides}]
            set tilt [expr {$i == 0 ? 0.7 : $i == $count - 1 ? -0.7 : 0.0}]
            lappend row [figure_point $owner [list [expr {$cx + $width * cos($a)}] [expr {$cy + $depth * sin($a)}] $cz] \
                [unit [expr {cos($a)}] [expr {sin($a)}] $tilt] $weight]
        }
        lappend grid $row
    }
    for {set i 0} {$i + 1 < $count} {incr i} {
        for {set j 0} {$j < $sides} {incr j} {
            set k [expr {($j + 1) % $sides}]
            lappend faces [list $layer [lindex $grid [expr {$i + 1}] $j] [lindex $grid [expr {$i + 1}] $k] \
                [lindex $grid $i $k] [lindex $grid $i $j]]
        }
    }
    # Both ends are closed by a fan of quads around their first corner.
    foreach {row order} [list [lindex $grid 0] {0 1 2 3 0 3 4 5 0 5 6 7} [lindex $grid end] {3 2 1 0 5 4 3 0 7 6 5 0}] {
        foreach {a b c d} $order {
            lappend faces [list $layer [lindex $row $a] [lindex $row $b] [lindex $row $c] [lindex $row $d]]
        }
    }
}

proc figure_end {file title joints blends colours} {
    global folder owned faces
    set channel [open [file join $folder $file] w]
    fconfigure $channel -translation lf -encoding ascii
    puts $channel "# $title"
    foreach {name parent place} $joints {
        set count [expr {[dict exists $owned $name] ? [llength [dict get $owned $name]] : 0}]
        puts $channel [format {joint %-8s %5d %5d %5d  %-8s %3d} $name {*}$place $parent $count]
    }
    foreach {name joint_a joint_b} $blends {
        puts $channel "blend $joint_a $joint_b [llength [dict get $owned $name]]"
    }
    set order {}
    foreach {name parent place} $joints { lappend order $name }
    foreach {name joint_a joint_b} $blends { lappend order $name }
    set number 0
    set normals {}
    puts $channel points
    foreach owner $order {
        if {![dict exists $owned $owner]} continue
        set index 0
        foreach record [dict get $owned $owner] {
            lassign $record place normal weight
            incr number
            dict set id [list $owner $index] $number
            incr index
            puts $channel [format {%-4d %6d %6d %6d  %.2f} $number {*}[lmap value $place {expr {round($value)}}] $weight]
            append normals [format {%-4d %7.3f %7.3f %7.3f} $number {*}$normal] \n
        }
    }
    puts $channel "normals\n$normals"
    foreach {layer colour} $colours {
        puts $channel "layer $layer $colour singlesided\ntriangles"
        foreach face $faces {
            if {[lindex $face 0] ne $layer} continue
            lassign [lmap corner [lrange $face 1 4] {dict get $id $corner}] a b c d
            puts $channel [format {1 %4d %4d %4d %4d} $a $d $b $c]
        }
    }
    puts $channel "child stars 0 0 0 1 1 1 0 0 0"
    close $channel
}

proc make_figure {} {
    figure_begin
    set joints {
        pelvis world  {0 0 200}
        chest  pelvis {0 0 250}
        head   chest  {0 0 330}
        arm_l  chest  {46 0 306}   fore_l arm_l {50 0 246}   hand_l fore_l {52 0 190}
        arm_r  chest  {-46 0 306}  fore_r arm_r {-50 0 246}  hand_r fore_r {-52 0 190}
        leg_l  pelvis {20 0 190}   shin_l leg_l {20 0 104}   foot_l shin_l {20 0 16}
        leg_r  pelvis {-20 0 190}  shin_r leg_r {-20 0 104}  foot_r shin_r {-20 0 16}
    }
    # The waist follows chest and pelvis alike.
    tube shirt {
        {chest 1.0 {0 0 322} 26 16} {chest 1.0 {0 0 306} 46 22} {chest 1.0 {0 0 270} 40 23}
        {waist 0.5 {0 0 246} 34 20} {pelvis 1.0 {0 0 214} 38 22} {pelvis 1.0 {0 0 188} 34 20}
    }
    tube skin {
        {head 1.0 {0 0 392} 14 15} {head 1.0 {0 -2 378} 27 29} {head 1.0 {0 -2 356} 28 31} {head 1.0 {0 -2 338} 19 21}
        {head 0.6 {0 0 326} 11 12}
    }
    foreach {side x} {l 46 r -46} {
        set out [expr {$x > 0 ? 1 : -1}]
        # A weight below one shares a ring with the joint's parent.
        tube shirt [list [list arm_$side 0.4 [list [expr {$x - 4 * $out}] 0 314] 12 13] [list arm_$side 0.8 [list $x 0 300] 14 14] \
            [list arm_$side 1.0 [list [expr {$x + 2 * $out}] 0 272] 13 13] [list fore_$side 0.5 [list [expr {$x + 4 * $out}] 0 246] 12 12]]
        tube skin [list [list fore_$side 0.6 [list [expr {$x + 4 * $out}] 0 244] 11 11] [list fore_$side 1.0 [list [expr {$x + 5 * $out}] 0 214] 10 10] \
            [list hand_$side 0.5 [list [expr {$x + 6 * $out}] 0 192] 8 9] [list hand_$side 1.0 [list [expr {$x + 6 * $out}] -2 176] 9 12] \
            [list hand_$side 1.0 [list [expr {$x + 6 * $out}] -2 162] 6 9]]
    }
    foreach {side x} {l 20 r -20} {
        tube trousers [list [list leg_$side 0.5 [list $x 0 196] 19 19] [list leg_$side 1.0 [list $x 0 170] 19 20] \
            [list leg_$side 1.0 [list $x 0 130] 16 17] [list shin_$side 0.5 [list $x 0 104] 14 15] \
            [list shin_$side 1.0 [list $x 2 74] 14 15] [list shin_$side 1.0 [list $x 2 34] 11 12]]
        tube shoes [list [list foot_$side 0.6 [list $x 2 34] 12 13] [list foot_$side 1.0 [list $x -6 18] 14 24] \
            [list foot_$side 1.0 [list $x -12 0] 15 30]]
    }
    figure_end figure.mod "A figure with a skeleton" $joints {waist chest pelvis} {
        skin {124 92 70} shirt {96 38 34} trousers {34 46 74} shoes {26 22 20}
    }
}

# Five small stars in a circle around the head, which turn about the axis of the figure.
proc make_stars {} {
    global pi
    model_begin
    layer "stars 127 112 40 doublesided"
    statement triangles
    for {set i 0} {$i < 5} {incr i} {
        set a [expr {2 * $pi * $i / 5}]
        set cx [expr {62 * cos($a)}]
        set cy [expr {62 * sin($a)}]
        set normal [list [expr {cos($a)}] [expr {sin($a)}] 0]
        foreach {u v} {0 11 11 0 0 -11 -11 0} {
            lappend corners [point [list [expr {$cx - $u * sin($a)}] [expr {$cy + $u * cos($a)}] [expr {372 + $v}]] $normal]
        }
        quad {*}[lreverse $corners]
        set corners {}
    }
    model_end stars.mod "Stars around a head"
}

# The lantern's own origin is the hand that it hangs on.
proc make_lantern {} {
    model_begin
    layer "handle 40 40 44 doublesided"
    statement triangles
    panel {-2 0 -30} {2 0 -30} {2 0 -10} {-2 0 -10}
    panel {0 -2 -30} {0 2 -30} {0 2 -10} {0 -2 -10}
    uvees_end
    layer "glass 127 118 60 singlesided"
    statement triangles
    round_wall 11 -66 14 -48 0 360 8 1 1
    round_wall 14 -48 11 -34 0 360 8 1 1
    uvees_end
    layer "caps 44 40 40 singlesided"
    statement triangles
    round_wall 15 -34 0 -26 0 360 8 1 1
    round_wall 15 -72 13 -65 0 360 8 1 1
    uvees_end
    model_end lantern.mod "A lantern"
}

# ---- motion --------------------------------------------------------------------------------------------------------

proc write_lines {file lines} {
    global folder
    set channel [open [file join $folder $file] w]
    fconfigure $channel -translation lf -encoding ascii
    foreach line $lines { puts $channel $line }
    close $channel
}

# One stride in 1.6 seconds, a frame every tenth; what the left side does the right side does half a stride later.
proc walk_frames {} {
    global pi
    set lines {{# A stride. Bones turn about x, the axis across the figure.}}
    lappend lines "names translate rotate pelvis chest head arm_l fore_l arm_r fore_r leg_l shin_l foot_l leg_r shin_r foot_r child0"
    for {set i 0} {$i <= 16} {incr i} {
        set phase [expr {2 * $pi * $i / 16.0}]
        set swing [expr {sin($phase)}]
        set bob [expr {round(4 * cos(2 * $phase))}]
        set line [format %.1f [expr {$i / 10.0}]]
        append line "  0 0 $bob  0 0 0"
        append line [format "  0 0 z%.1f  0 0 z%.1f  x%.1f 0 0" [expr {6 * $swing}] [expr {-10 * $swing}] [expr {3 * cos(2 * $phase)}]]
        append line [format "  x%.1f 0 0  x%.1f 0 0" [expr {26 * $swing}] [expr {-18 - 10 * $swing}]]
        # The right arm holds the lantern and stays bent.
        append line [format "  x%.1f 0 0  x%.1f 0 0" [expr {-22 - 8 * $swing}] -52.0]
        foreach turn [list $phase [expr {$phase + $pi}]] {
            set bend [expr {max(0.0, -cos($turn))}]
            append line [format "  x%.1f 0 0  x%.1f 0 0  x%.1f 0 0" [expr {-30 * sin($turn)}] [expr {46 * $bend}] [expr {8 * sin($turn)}]]
        }
        append line [format "  0 0 z%.1f" [expr {360.0 * $i / 16.0 * 0.4}]]
        lappend lines $line
    }
    # From half a second on the left hand waves too.
    lappend lines "0.5 wave.clip"
    return $lines
}

proc make_walk {} {
    make_figure
    make_stars
    make_lantern
    write_lines walk.clip [walk_frames]
    write_lines wave.clip {
        {# Added to what the arm does anyway.}
        {names arm_l fore_l}
        {0.0  0 0 0       0 0 0}
        {0.3  0 y-95 0    0 y-40 0}
        {0.5  0 y-95 0    0 y-75 0}
        {0.7  0 y-95 0    0 y-35 0}
        {0.8  0 y-95 0    0 y-60 0}
        {1.1  0 0 0       0 0 0}
    }
    write_lines swing.clip {
        {# The lantern keeps hanging straight, more or less, while the arm that holds it is bent.}
        {names translate rotate}
        {0.0  0 0 -14    x62 0 0}
        {0.4  0 0 -14    x88 0 0}
        {0.8  0 0 -14    x74 0 0}
        {1.2  0 0 -14    x58 0 0}
        {1.6  0 0 -14    x62 0 0}
    }
    write_lines walk.scene {
        {# model, its clip, and what it hangs on}
        {. figure.mod  . walk.clip  world}
        {. lantern.mod . swing.clip figure.mod hand_r}
    }
}
