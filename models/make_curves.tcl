# duck.mod: a toy of few curved quads and triangles, half of it modelled and half of it mirrored; display lod shows.
# knot.mod: flat triangles and quads with smooth normals, which display pnfilter makes round.

# A point of a surface over two angles in degrees, and the normal there by differences. The script knows the cosine and
# the sine of the first (ca, sa) and of the second (cb, sb).
proc surface_at {script u v} {
    global pi
    set a [expr {$u * $pi / 180}]
    set b [expr {$v * $pi / 180}]
    apply [list {ca sa cb sb} $script] [expr {cos($a)}] [expr {sin($a)}] [expr {cos($b)}] [expr {sin($b)}]
}

proc surface_normal {script u v} {
    set step 0.05
    set along_u [lmap p [surface_at $script [expr {$u + $step}] $v] q [surface_at $script [expr {$u - $step}] $v] {
        expr {$p - $q}
    }]
    set along_v [lmap p [surface_at $script $u [expr {$v + $step}]] q [surface_at $script $u [expr {$v - $step}]] {
        expr {$p - $q}
    }]
    lassign $along_u ux uy uz
    lassign $along_v vx vy vz
    unit [expr {$uy * $vz - $uz * $vy}] [expr {$uz * $vx - $ux * $vz}] [expr {$ux * $vy - $uy * $vx}]
}

# Half an egg around the plane x = 0, from pole to pole along z: script gives the place for an angle around (u, in
# degrees from -90 to 90) and a height angle (v, from -90 to 90). Poles are triangles, everything else quads.
proc half_egg {script around rings} {
    set id [dict create]
    for {set i 0} {$i <= $rings} {incr i} {
        set v [expr {-90 + 180.0 * $i / $rings}]
        # At a pole the normal is that of the ring nearby, taken at the middle of the arc.
        set near [expr {$i == 0 ? -89.9 : $i == $rings ? 89.9 : $v}]
        for {set j 0} {$j <= $around} {incr j} {
            set u [expr {-90 + 180.0 * $j / $around}]
            set pole [expr {$i == 0 || $i == $rings}]
            set normal [expr {$pole ? [list 0 0 [expr {$i == 0 ? -1 : 1}]] : [surface_normal $script $u $near]}]
            # Nothing may lean out of the plane that the mirror stands in.
            if {!$pole && ($j == 0 || $j == $around)} { set normal [unit 0 [lindex $normal 1] [lindex $normal 2]] }
            dict set id $i,$j [point [surface_at $script [expr {$pole ? 0 : $u}] $v] $normal]
        }
    }
    for {set i 0} {$i < $rings} {incr i} {
        set n [expr {$i + 1}]
        for {set j 0} {$j < $around} {incr j} {
            set k [expr {$j + 1}]
            if {$i == 0} {
                triangle [dict get $id 0,0] [dict get $id 1,$k] [dict get $id 1,$j] 3
            } elseif {$n == $rings} {
                triangle [dict get $id $i,$j] [dict get $id $i,$k] [dict get $id $rings,0] 3
            } else {
                quad [dict get $id $i,$j] [dict get $id $i,$k] [dict get $id $n,$k] [dict get $id $n,$j] 4
            }
        }
    }
}

proc make_duck {} {
    model_begin
    layer "body 127 104 20 singlesided mirror x"
    statement triangles
    # u turns from -y over x to y.
    half_egg {
        set y [expr {180 * $cb * $sa}]
        set lift [expr {$y > 40 ? ($y - 40) * ($y - 40) * 0.006 : 0}]
        list [expr {125 * $cb * $ca}] $y [expr {110 + 100 * $sb + $lift * (0.4 + 0.6 * $sb)}]
    } 4 4
    half_egg {
        list [expr {82 * $cb * $ca}] [expr {-95 + 84 * $cb * $sa}] [expr {268 + 82 * $sb}]
    } 4 4
    layer "wing 118 92 16 singlesided mirror x"
    statement triangles
    half_egg {
        list [expr {112 + 26 * $cb * $ca}] [expr {40 + 88 * $cb * $sa}] [expr {128 + 46 * $sb + 22 * $cb * $sa}]
    } 4 4
    layer "beak 124 60 8 singlesided mirror x"
    statement triangles
    half_egg {
        list [expr {46 * $cb * $ca}] [expr {-178 + 52 * $cb * $sa}] [expr {252 + 17 * $sb}]
    } 4 4
    layer "eye 12 12 16 singlesided mirror x"
    statement triangles
    half_egg {
        list [expr {52 + 14 * $cb * $ca}] [expr {-152 + 14 * $cb * $sa}] [expr {296 + 14 * $sb}]
    } 2 4
    model_end duck.mod "A duck of curved quads and triangles: few primitives, as round as display lod says"
}

proc make_knot {} {
    global pi
    model_begin
    layer "knot 40 92 127 singlesided"
    statement triangles
    set segments 40
    set sides 5
    set curve {t {
        list [expr {(200 + 90 * cos(3 * $t)) * cos(2 * $t)}] [expr {(200 + 90 * cos(3 * $t)) * sin(2 * $t)}] \
            [expr {110 * sin(3 * $t)}]
    }}
    for {set i 0} {$i < $segments} {incr i} {
        set t [expr {2 * $pi * $i / $segments}]
        set place [apply $curve $t]
        set ahead [apply $curve [expr {$t + 0.01}]]
        lassign [unit {*}[lmap p $ahead q $place {expr {$p - $q}}]] tx ty tz
        # A frame around the curve: outward from the axis, and across.
        lassign $place px py pz
        set outward [unit [expr {$px * 1.0}] [expr {$py * 1.0}] 0.0]
        lassign $outward ox oy oz
        lassign [unit [expr {$ty * $oz - $tz * $oy}] [expr {$tz * $ox - $tx * $oz}] [expr {$tx * $oy - $ty * $ox}]] ax ay az
        lassign [list [expr {$ay * $tz - $az * $ty}] [expr {$az * $tx - $ax * $tz}] [expr {$ax * $ty - $ay * $tx}]] bx by bz
        for {set j 0} {$j < $sides} {incr j} {
            set a [expr {2 * $pi * $j / $sides}]
            set normal [list [expr {cos($a) * $ax + sin($a) * $bx}] [expr {cos($a) * $ay + sin($a) * $by}] \
                [expr {cos($a) * $az + sin($a) * $bz}]]
            lassign $normal nx ny nz
            dict set id $i,$j [point [list [expr {$px + 48 * $nx}] [expr {$py + 48 * $ny}] [expr {$pz + 48 * $nz}]] $normal]
        }
    }
    for {set i 0} {$i < $segments} {incr i} {
        set n [expr {($i + 1) % $segments}]
        for {set j 0} {$j < $sides} {incr j} {
            set k [expr {($j + 1) % $sides}]
            set corners [list [dict get $id $i,$j] [dict get $id $n,$j] [dict get $id $n,$k] [dict get $id $i,$k]]
            # Every other face as two triangles, so that both kinds are there.
            if {($i + $j) % 2} {
                lassign $corners a b c d
                triangle $a $c $b
                triangle $a $d $c
            } else {
                quad {*}[lreverse $corners]
            }
        }
    }
    model_end knot.mod "A faceted knot with smooth normals"
}

proc make_curves {} {
    make_duck
    make_knot
}
