# mill.mod, the scene that the viewer opens by itself: a windmill whose tower and roof are one modelled half and its
# mirror (the mirrored half wears an image of its own), a pond and a ball with a reflection map, and child models:
# ground (gouraud colours), trees (one model, placed three times), fence and sails (images with a colour key).

set brick {
    set row [expr {$y / 8}]
    set column [expr {($x + ($row % 2) * 8) % 16}]
    set grain [expr {[noise] * 26 - 13}]
    if {$y % 8 == 0 || $column == 0} {
        return [list [expr {176 + $grain}] [expr {166 + $grain}] [expr {150 + $grain}]]
    }
    set tone [expr {(($row * 7 + ($x + ($row % 2) * 8) / 16 * 5) % 5) * 9}]
    list [expr {196 - $tone + $grain}] [expr {120 - $tone + $grain}] [expr {92 - $tone + $grain}]
}

proc make_mill_textures {} {
    global brick
    texture brick.tga 64 64 $brick
    # The same wall with moss on its lower courses, for the mirrored half.
    texture brickmoss.tga 64 64 "
        lassign \[apply {{x y width height} {$brick}} \$x \$y \$width \$height\] red green blue
        if {\[noise\] < 0.75 - \$y / 48.0} { list 96 \[expr {128 + \[noise\] * 30}\] 70 } else { list \$red \$green \$blue }
    "
    texture shingle.tga 64 64 {
        set row [expr {$y / 8}]
        set column [expr {($x + ($row % 2) * 4) % 8}]
        set grain [expr {[noise] * 20 - 10 - ($y % 8 == 0 ? 45 : 0) - ($column == 0 ? 30 : 0)}]
        list [expr {118 + $grain}] [expr {72 + $grain}] [expr {60 + $grain}]
    }
    texture leaves.tga 64 64 {
        set grain [expr {[noise] * 90 - 45}]
        list [expr {70 + $grain * 0.6}] [expr {130 + $grain}] [expr {58 + $grain * 0.4}]
    }
    texture door.tga 32 64 {
        if {$x < 3 || $x > 28 || $y > 60} { return {92 84 78} }
        set grain [expr {[noise] * 16 - ($x % 6 == 0 ? 38 : 0)}]
        if {$y % 24 > 19} { set grain [expr {$grain - 50}] }
        list [expr {128 + $grain}] [expr {88 + $grain}] [expr {52 + $grain}]
    }
    # Magenta is the colour key: what lies behind shows there.
    texture fence.tga 64 32 {
        set grain [expr {[noise] * 24 - 12}]
        set post [expr {$x % 16 >= 4 && $x % 16 < 11 && $y < 26 + (3 - abs($x % 16 - 7))}]
        set rail [expr {($y >= 6 && $y < 10) || ($y >= 18 && $y < 22)}]
        if {!$post && !$rail} { return {255 0 255} }
        list [expr {226 + $grain - ($post ? 0 : 30)}] [expr {220 + $grain - ($post ? 0 : 30)}] \
            [expr {204 + $grain - ($post ? 0 : 30)}]
    }
    texture sail.tga 32 128 {
        set grain [expr {[noise] * 14 - 7}]
        if {$x >= 13 && $x < 18} { return [list [expr {110 + $grain}] [expr {78 + $grain}] [expr {50 + $grain}]] }
        if {$x < 2 || $x > 29 || $y % 16 < 3} { return [list [expr {140 + $grain}] [expr {104 + $grain}] [expr {70 + $grain}]] }
        if {$x > 17} { return [list [expr {238 + $grain}] [expr {230 + $grain}] [expr {210 + $grain}]] }
        return {255 0 255}
    }
    # What a bright sky over a dark land looks like in a ball.
    texture sky.tga 64 64 {
        set dx [expr {($x - 31.5) / 32.0}]
        set dy [expr {($y - 31.5) / 32.0}]
        set cloud [expr {sin($dx * 9 + 2) * cos($dy * 7) * 22}]
        if {$dy < 0.05} {
            set depth [expr {1.0 + $dy}]
            return [list [expr {86 * $depth}] [expr {104 * $depth}] [expr {78 * $depth}]]
        }
        list [expr {150 + $dy * 40 + $cloud}] [expr {190 + $dy * 30 + $cloud}] [expr {236 + $cloud * 0.5}]
    }
}

proc make_mill_house {} {
    global pi
    model_begin

    # East half of the tower; the layer's mirror stands for the west half.
    layer "tower 127 127 127 singlesided mirror x"
    statement triangles
    round_wall 170 0 120 420 -90 90 12 6 6
    uvees_end
    statement "image brick.tga x z"
    statement "mirrorimage brickmoss.tga"

    layer "ledge 84 80 74 singlesided mirror x"
    statement triangles
    round_wall 176 0 176 22 -90 90 12 1 1
    round_wall 176 22 160 30 -90 90 12 1 1
    round_wall 134 412 134 434 -90 90 12 1 1
    round_wall 118 404 134 412 -90 90 12 1 1
    uvees_end

    layer "roof 127 127 127 singlesided mirror x"
    statement triangles
    round_wall 140 432 86 520 -90 90 12 6 3
    round_wall 86 520 0 590 -90 90 12 6 3
    uvees_end
    statement "image shingle.tga x z"

    # Half a door on the south side; its image repeats nothing.
    layer "door 127 127 127 doublesided"
    statement triangles
    panel {-44 -176 22} {44 -176 22} {44 -160 150} {-44 -160 150}
    uvees_end
    statement "image door.tga x z"

    layer "windows 40 52 66 doublesided mirror x"
    statement triangles
    panel {62 -134 230} {96 -114 230} {92 -108 284} {60 -128 284}
    panel {0 -146 250} {22 -146 250} {22 -140 300} {0 -140 300}
    uvees_end

    # A ball that shows nothing but the sky.
    layer "ball 127 120 90 singlesided"
    statement triangles
    set rings 10
    set around 20
    set ball {}
    for {set i 0} {$i <= $rings} {incr i} {
        set theta [expr {$pi * $i / $rings}]
        for {set j 0} {$j < $around} {incr j} {
            set phi [expr {2 * $pi * $j / $around}]
            set normal [list [expr {sin($theta) * cos($phi)}] [expr {sin($theta) * sin($phi)}] [expr {cos($theta)}]]
            lassign $normal x y z
            dict set ball $i,$j [point [list [expr {26 * $x}] [expr {26 * $y}] [expr {610 + 26 * $z}]] $normal]
        }
    }
    for {set i 0} {$i < $rings} {incr i} {
        for {set j 0} {$j < $around} {incr j} {
            set k [expr {($j + 1) % $around}]
            set n [expr {$i + 1}]
            set upper [dict get $ball $i,$j]
            set lower [dict get $ball $n,$j]
            set next_upper [dict get $ball $i,$k]
            set next_lower [dict get $ball $n,$k]
            if {$i > 0} { triangle $lower $next_upper $upper }
            if {$i < $rings - 1} { triangle $lower $next_lower $next_upper }
        }
    }
    statement "reflect sky.tga 0.75"

    # Water: its own blue, and half as much sky.
    layer "pond 44 74 96 doublesided"
    statement triangles
    set centre [point {330 -270 6} {0 0 1}]
    for {set i 0} {$i < 24} {incr i} {
        foreach {name step} {here 0 next 1} {
            set a [expr {2 * $pi * ($i + $step) / 24}]
            set $name [point [list [expr {330 + 140 * cos($a)}] [expr {-270 + 90 * sin($a)}] 6] \
                [unit [expr {0.12 * cos(3 * $a)}] [expr {0.12 * sin(2 * $a)}] 1]]
        }
        triangle $centre $here $next
    }
    statement "reflect sky.tga 0.5"

    child ground 0 0 0 1 "0 0 0"
    child tree -470 170 4 1.15 "0 0 20"
    child tree -340 390 8 0.9 "0 0 75"
    child tree 420 330 6 1.3 "0 0 140"
    child fence -400 -250 4 1 "0 0 0"
    child sails 0 -170 470 1 "0 24 0"
    model_end mill.mod "A windmill, with everything that a layer can wear"
}

proc make_ground {} {
    global pi
    model_begin
    layer "ground 127 127 127 singlesided"
    statement triangles
    set height {{x y} {
        set r [expr {sqrt($x * $x + $y * $y)}]
        set rise [expr {min(1.0, max(0.0, ($r - 540) / 300.0))}]
        expr {60 * $rise * (0.6 + sin($x / 150.0) * cos($y / 190.0))}
    }}
    set rings 9
    set around 36
    for {set i 0} {$i <= $rings} {incr i} {
        set r [expr {$i == 0 ? 0 : 90 * $i}]
        for {set j 0} {$j < $around} {incr j} {
            set a [expr {2 * $pi * $j / $around}]
            set x [expr {$r * cos($a)}]
            set y [expr {$r * sin($a)}]
            set z [apply $height $x $y]
            set normal [unit [expr {([apply $height [expr {$x - 8}] $y] - [apply $height [expr {$x + 8}] $y]) / 16.0}] \
                [expr {([apply $height $x [expr {$y - 8}]] - [apply $height $x [expr {$y + 8}]]) / 16.0}] 1]
            # A sandy path from the door to the south; else grass, lighter where it is higher.
            if {abs($x) < 70 && $y < -60} {
                set colour {214 190 138}
            } else {
                set tone [expr {[noise] * 24 + $z * 0.7}]
                set colour [list [expr {int(92 + $tone)}] [expr {int(148 + $tone)}] [expr {int(66 + $tone * 0.5)}]]
            }
            if {$i == 0} { set colour {120 150 80} }
            dict set id $i,$j [point [list $x $y $z] $normal $colour]
        }
    }
    for {set i 0} {$i < $rings} {incr i} {
        for {set j 0} {$j < $around} {incr j} {
            set k [expr {($j + 1) % $around}]
            set n [expr {$i + 1}]
            if {$i == 0} {
                triangle [dict get $id 0,0] [dict get $id 1,$j] [dict get $id 1,$k]
            } else {
                quad [dict get $id $i,$j] [dict get $id $n,$j] [dict get $id $n,$k] [dict get $id $i,$k]
            }
        }
    }
    # The edge, so that the disc has a body.
    layer "edge 74 58 44 singlesided"
    statement triangles
    set r [expr {90 * $rings}]
    for {set j 0} {$j < $around} {incr j} {
        set corners {}
        foreach step {0 1} {
            set a [expr {2 * $pi * ($j + $step) / $around}]
            set x [expr {$r * cos($a)}]
            set y [expr {$r * sin($a)}]
            set normal [list [expr {cos($a)}] [expr {sin($a)}] 0]
            lappend corners [point [list $x $y -60] $normal {120 96 70}] \
                [point [list $x $y [apply $height $x $y]] $normal {150 122 88}]
        }
        lassign $corners low high next_low next_high
        quad $low $next_low $next_high $high
    }
    model_end ground.mod "The ground, coloured point by point"
}

proc make_tree {} {
    model_begin
    layer "trunk 78 56 36 singlesided"
    statement triangles
    round_wall 20 -10 15 80 0 360 8 1 1
    uvees_end
    layer "leaves 127 127 127 singlesided"
    statement triangles
    foreach {radius bottom top} {96 60 190 78 130 250 54 205 310} {
        round_wall $radius $bottom 0 $top 0 360 14 4 2
    }
    uvees_end
    statement "image leaves.tga x z"
    model_end tree.mod "A tree"
}

proc make_fence {} {
    model_begin
    layer "fence 127 127 127 doublesided"
    statement triangles
    for {set i 0} {$i < 3} {incr i} {
        set x [expr {$i * 110}]
        panel [list $x 0 0] [list [expr {$x + 110}] 0 0] [list [expr {$x + 110}] 0 62] [list $x 0 62] 2 1 [expr {2 * $i}]
    }
    uvees_end
    statement "invisible 1.0 0.0 1.0"
    statement "image fence.tga x z"
    model_end fence.mod "A fence: what is magenta in its image is not there"
}

proc make_sails {} {
    global pi
    model_begin
    layer "shaft 70 52 40 singlesided"
    statement triangles
    # A stub of a shaft along y, as a box.
    panel {-14 -12 -14} {14 -12 -14} {14 -12 14} {-14 -12 14}
    panel {14 -12 -14} {14 60 -14} {14 60 14} {14 -12 14}
    panel {-14 60 -14} {-14 -12 -14} {-14 -12 14} {-14 60 14}
    panel {-14 -12 14} {14 -12 14} {14 60 14} {-14 60 14}
    panel {-14 60 -14} {14 60 -14} {14 -12 -14} {-14 -12 -14}
    uvees_end
    layer "sails 127 127 127 doublesided"
    statement triangles
    for {set i 0} {$i < 4} {incr i} {
        set a [expr {$i * $pi / 2}]
        set corners {}
        foreach {across along} {-34 16 34 16 34 330 -34 330} {
            # The sail is turned a little out of its plane, as sails are.
            lappend corners [list [expr {$across * cos($a) - $along * sin($a)}] [expr {-8 + $across * 0.18}] \
                [expr {$across * sin($a) + $along * cos($a)}]]
        }
        panel {*}$corners
    }
    uvees_end
    statement "invisible 1.0 0.0 1.0"
    statement "image sail.tga x z"
    model_end sails.mod "Four sails on a shaft"
}

proc make_mill {} {
    make_mill_textures
    make_mill_house
    make_ground
    make_tree
    make_fence
    make_sails
}
