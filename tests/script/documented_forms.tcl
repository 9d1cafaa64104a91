# The forms that docs/commands.md names, a good value for each of their arguments, and a scene that they work on.

set docs [file join [file dirname [file dirname $env(PELT_TEST_DIR)]] docs]

# Forms and what they answer, in the order of the page.
proc documented_forms {} {
    set channel [open [file join $::docs commands.md]]
    fconfigure $channel -encoding utf-8
    set forms {}
    foreach line [split [read $channel] \n] {
        if {[regexp {^\| `([^`]+)` \| ([^|]+) \|} $line -> form result]} {
            lappend forms $form [string trim $result]
        }
    }
    close $channel
    return $forms
}

# A good value for each kind of argument.
proc argument {name} {
    switch $name {
        name - newname - layer { return face }
        parent { return .view }
        cursor { return pan }
        proc { return record_event }
        file { return [work_path sample.mod] }
        model { return sample }
        picture { return [work_path saved.tga] }
        animation { return [work_path sample.scene] }
        id { return $::id }
        child { return $::child_id }
        rate { return 25 }
        n { return 1 }
        r - g - b - red - green - blue - f { return 1 }
        sides { return 2 }
        mirror { return x }
        on { return on }
        level { return 3 }
        index - cursorid { return 0 }
        a1 - a2 - a3 { return z30 }
        input { return "points\n9\t1\t2\t3" }
        px - py { return 40 }
        width - height { return 120 }
        matrix { return {1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1} }
        x - y - z - skipped { return 2 }
    }
    error "the page has an argument <$name> that this test does not know"
}

# A form with a value in the place of each argument.
proc form_words {form} {
    return [lmap word $form {expr {[regexp {^<(.*)>$} $word -> name] ? [argument $name] : $word}}]
}

proc record_event {args} {}

# A scene in which every form has something to work on: a model with an image and a child, selected with its layer.
proc fresh_scene {} {
    sorvel reset
    sorvel set view size 0 0
    set ::id [sorvel file open [work_path sample.mod]]
    sorvel draw
    set ::child_id [string trim [sorvel find model inner]]
    sorvel select clear
    sorvel select model $::id
    sorvel select layer face
    messages
}

proc write_sample {} {
    write_tga sample.tga {{{255 0 0} {0 255 0}} {{0 0 255} {255 255 0}}}
    write_square inner.mod
    write_file sample.mod "[square_points 1 10]layer face 127 0 0 doublesided\n[square_quad 1]image sample.tga x y\nchild inner 0 0 5 1 1 1 0 0 0\n"
    write_file clip "names translate\n0.0 0 0 0\n2.0 0 0 10\n"
    write_file sample.scene "$::work inner.mod $::work clip world\n"
}
