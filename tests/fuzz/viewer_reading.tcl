# Fuzzing of what the viewer reads: settings, recent files, scene lists, clips, models and images, through the viewer's
# own reading and what follows from it, in a real window.
#
# A round makes its input by chance from the seed and its number alone, so that one can be run again by itself. It fails
# when an error escapes, a program is started, a question is asked, a file outside changes, it takes too long, or there is
# neither a good result nor a notice.
#
# check-tcl: allow expr the conditions of good settings stand in a table here and are no input
#
# What surprises: the rounds share one viewer; whoever runs them has started it.

namespace eval reading {
    variable state 0             ;# of chance
    variable given {}            ;# the text to read in the place of one of chance
    variable LONGEST 20000       ;# milliseconds that a round may take
    variable MOST_MEMORY 1500000 ;# kilobytes that the process may hold
    variable seeds               ;# texts to begin with, by kind
    variable started {}          ;# programs that somebody asked for
    variable errors {}           ;# that came to nobody
    variable input {}            ;# folder of the files of the round
    variable outside {}          ;# folder that nothing may change
    variable listed {}           ;# what lies in the folders that nothing may change
    variable canary {}           ;# a file that only a program or a script out of an input makes
    variable KINDS {settings settings settings start recent recent list list list clip clip model model image}
    variable program {}          ;# the viewer as it is started by itself
}

# ---- chance --------------------------------------------------------------------------------------------------------

proc reading::begin_chance {seed round} {
    variable state
    set state [expr {($seed * 1000003 + $round * 7919 + 12345) & 0xffffffffffffffff}]
    for {set index 0} {$index < 4} {incr index} { chance 2 }
}

# A whole number from 0 to one below that; of nothing 0.
proc reading::chance {below} {
    variable state
    set state [expr {($state * 6364136223846793005 + 1442695040888963407) & 0xffffffffffffffff}]
    return [expr {($state >> 33) % max(1, $below)}]
}

# One of a list; nothing of an empty one.
proc reading::pick {list} { lindex $list [chance [llength $list]] }

# ---- inputs --------------------------------------------------------------------------------------------------------

# Words that have a meaning somewhere: to Tcl, to a shell, to a file system, to Tk, to a reader of numbers.
proc reading::nasty_word {} {
    variable input
    variable canary
    switch [chance 6] {
        0 { return [pick [list "|touch $canary" "\[exec touch $canary\]" "`touch $canary`" "\$(touch $canary)" \
            "; exec touch $canary" "\[exit 7\]" "\$env(HOME)" "\$::viewer::options::option(help)"]] }
        1 { return [pick [list /dev/zero /dev/stdin [file join $input pipe] $input / . .. ~ ~root ~nobody.mod "" " " \
            -force -- "C:\\x.mod" "//host/x.mod" "file:///etc/passwd" "x.mod " " x.mod" "a b.mod"]] }
        2 { return [pick [list \{ \} \" \\ \$ \[ \] "\x00" \n \r\n \t ";" "#" "%W" "%%" "\u00e9" "\u4e00" "\ufeff" \
            "\x80\xff"]] }
        3 { return [pick {0 -0 1 -1 08 0x10 1e999 -1e999 1e-320 nan inf 99999999999 2147483648 4294967296
            0.0000001 +1 1. .5 1,5}] }
        4 { return [string repeat [pick {x "a b " \[ \{ 9 ../ \u00e9}] [pick {2 30 300 25000}]] }
        default { return [pick {points layer triangles image child normals names translate rotate world end recent keys
            display pelt settings none . figure.mod walk.clip head on off turn true}] }
    }
}

# One of those texts with a few changes of chance; or the one that the round was given.
proc reading::text_from {texts} {
    variable given
    if {$given ne {}} { return $given }
    return [mutated [pick $texts]]
}

# A text with a few changes of chance.
proc reading::mutated {text} {
    for {set count [chance 6]} {$count >= 0} {incr count -1} {
        set length [string length $text]
        set at [chance [expr {$length + 1}]]
        set to [expr {$at + [chance 40]}]
        switch [chance 9] {
            0 { set text [string replace $text $at $to] }
            1 { set text [string range $text 0 [expr {$at - 1}]] }
            2 { set text "[string range $text 0 [expr {$at - 1}]][nasty_word][string range $text $at end]" }
            3 { set text [string range $text 0 $to][string range $text $at end] }
            4 { set text "[string range $text 0 [expr {$at - 1}]][format %c [chance 256]][string range $text $at+1 end]" }
            5 { set text [with_word $text [nasty_word]] }
            6 { set text [with_lines_moved $text] }
            7 { set text [with_word $text [pick {0 1 2 -1 3.5 1000000 -99999999999}]] }
            8 { set text $text[nasty_word] }
        }
    }
    return $text
}

# One of its words is another.
proc reading::with_word {text word} {
    set places [regexp -all -inline -indices {\S+} $text]
    if {[llength $places] == 0} { return $text$word }
    return [string replace $text {*}[pick $places] $word]
}

# A line stands elsewhere, or many times.
proc reading::with_lines_moved {text} {
    set lines [split $text \n]
    set line [pick $lines]
    if {[chance 2]} { return [join [linsert $lines [chance [llength $lines]] {*}[lrepeat [pick {1 3 40}] $line]] \n] }
    set at [chance [llength $lines]]
    return [join [linsert [lreplace $lines $at $at] [chance [llength $lines]] [lindex $lines $at]] \n]
}

# A settings file whose values, not its form, are of chance; half of them are changed as texts besides.
proc reading::settings_text {} {
    variable seeds
    variable given
    if {$given ne {} || [chance 3] == 0} { return [text_from $seeds(settings)] }
    set lines {"pelt viewer settings 1"}
    foreach name {recent geometry side side_width axes display lod background mode free rate loop watch scale keys folder
        unheard} {
        if {[chance 3] == 0} { lappend lines [list $name [settings_value $name]] }
    }
    lappend lines "end {}"
    set text [join $lines \n]\n
    if {[chance 2]} { set text [mutated $text] }
    return $text
}

proc reading::settings_value {name} {
    set number [pick {0 1 -1 7 30 99 9999 08 1e3 0.5 2.0 1.25 nan}]
    switch [chance 4] {
        0 { return [nasty_word] }
        1 {
            switch $name {
                geometry { return [pick {100x100 9999x9999 640x480+0+0 640x480+-50+-50 800x600+99999+99999 0800x0600 x}] }
                display { return [list [pick {wireframe lighting smooth flag}] [pick {0 1 2 on}] wireframe [pick {0 1}]] }
                background { return [list $number [pick {0 1 0.3}] [pick {0 1 2 .}]] }
                mode { return [pick {turn pan zoom fly}] }
                keys {
                    return [list [pick {fit quit open wireframe mode_pan none}] \
                        [pick {nan 0x10 F Ctrl+X Ctrl+Ctrl+Shift+Alt+x Shift+ + <Key> Key-x Button-1 "a b" Escape F99 \u00e9
                            %W ""}] \
                        [nasty_word] [nasty_word]]
                }
                recent { return [lmap index {1 2 3} { nasty_word }] }
                scale { return [pick {0 1.0 1.25 1.5 2.0 3 1.50}] }
                default { return $number }
            }
        }
        2 { return $number }
        default { return [lrepeat [chance 12] [nasty_word]] }
    }
}

proc reading::write {name text} {
    variable input
    set path [file join $input $name]
    file mkdir [file dirname $path]
    set channel [open [file normalize $path] w]
    fconfigure $channel -translation binary
    # What is no byte is written as UTF-8, so that both kinds come.
    if {[regexp {[^\x00-\xff]} $text]} { set text [encoding convertto utf-8 $text] }
    puts -nonewline $channel $text
    close $channel
    return $path
}

# The files of the round: what lies beside a scene list or a model, with one of them changed.
proc reading::write_scene {kind} {
    variable seeds
    foreach {name text} $seeds(scene) { write $name $text }
    switch $kind {
        list { return [write [pick {walk.scene walk.scene nan}] [text_from $seeds(list)]] }
        clip {
            write walk.clip [mutated [dict get $seeds(scene) walk.clip]]
            return [file join [set reading::input] walk.scene]
        }
        image {
            write skin.tga [mutated [dict get $seeds(scene) skin.tga]]
            return [file join [set reading::input] skinned.mod]
        }
        default { return [write [pick {it.mod it.txt it.scene nan.mod 0x10.mod}] [text_from $seeds(model)]] }
    }
}

# ---- what is done with them ----------------------------------------------------------------------------------------

# Everything that follows from settings at a start, without the start.
proc reading::read_settings {path} {
    viewer::settings read_file
    set problem [viewer::settings problem]
    set found [bad_values]
    # Before anything serves the event that writes it anew.
    if {$problem ne {} && [file exists $path]} { lappend found "a settings file that cannot be read stays in its place" }
    if {$problem ne {} && ![string match *[file nativename $path].damaged* [file nativename $problem]]} {
        lappend found "no word of the settings that were set aside: $problem"
    }
    foreach {name original check} $viewer::settings::SETTINGS { viewer::settings changed $name }
    viewer::display apply_kept
    viewer::display read_back
    viewer::view set_background [viewer::settings get background]
    viewer::window::place_window
    viewer::menus::fill recent .menu.file.recent
    if {[chance 8] == 0} {
        viewer::help show_keys
        update
        destroy .keys
    }
    return $found
}

# A viewer of its own starts with these settings, shows its scene and ends.
proc reading::start_viewer {} {
    variable program
    variable outside
    set script [write start.tcl [string map [list PROGRAM [list $program] MODEL [list [file join $outside lantern.mod]]] {
        proc bgerror {message} {
            puts stderr $::errorInfo
            exit 3
        }
        proc when_open {} {
            set ready [expr {[winfo exists .side.tree] && [llength [.side.tree children {}]] > 0}]
            after 50 [expr {$ready ? {viewer::window quit} : {when_open}}]
        }
        after 50 { package require Tk; when_open }
        set argv [list MODEL]
        source PROGRAM
    }]]
    watch_outside
    set command [list {*}[preloaded_environment] timeout 30 $::env(PELT_TCLSH) $script]
    if {[catch { own_exec {*}$command 2>@1 } told]} { return [list "the viewer did not start: $told"] }
    return [expr {$told eq {} ? {} : [list "the viewer started with: $told"]}]
}

# Settings that have a value which they cannot have.
proc reading::bad_values {} {
    set bad {}
    foreach {name condition} {
        recent     {[string is list $value] && [llength $value] <= 10 && ![regexp {(^| )\{?~} $value]}
        geometry   {$value eq {} || [scan $value %dx%d width height] == 2 && $width >= 100 && $height >= 100}
        side_width {[string is integer -strict $value] && $value >= 0 && $value <= 9999}
        display    {[string is list $value] && [llength $value] % 2 == 0}
        lod        {$value in {{} 0 1 2 3 4 5 6}}
        background {[llength $value] == 3 && [tcl::mathfunc::max {*}$value] <= 1 && [tcl::mathfunc::min {*}$value] >= 0}
        mode       {$value in {turn pan zoom}}
        rate       {[string is integer -strict $value] && $value >= 1 && $value <= 60}
        scale      {$value in {0 1.0 1.25 1.5 2.0}}
        keys       {[string is list $value] && [llength $value] % 2 == 0}
        side       {$value in {0 1}}
        axes       {$value in {0 1}}
        free       {$value in {0 1}}
        loop       {$value in {0 1}}
        watch      {$value in {0 1}}
    } {
        set value [viewer::settings get $name]
        if {[catch { expr $condition } good] || !$good} { lappend bad "a bad value of $name" }
    }
    return $bad
}

# A file is opened or added; with a good result, or a notice above the scene that stood there.
proc reading::open_file {verb path} {
    set before [sorvel scene tree]
    set opened [viewer::documents open_file $verb $path]
    update
    if {$opened} {
        if {[winfo ismapped .noticebad]} { return [list "a notice after a good load"] }
        return {}
    }
    set found {}
    if {![winfo ismapped .noticebad] || [.noticebad.text cget -text] eq {}} {
        lappend found "neither a scene nor a notice"
    }
    if {[sorvel scene tree] ne $before} { lappend found "a failed load changed the scene" }
    return $found
}

# A few things that a person does with a scene.
proc reading::use_scene {} {
    for {set count [chance 5]} {$count > 0} {incr count -1} {
        switch [chance 9] {
            0 { viewer::tree select_all }
            1 { viewer::tree select_row [pick [all_rows {}]] }
            2 { .side.tabs select [pick {.side.layer .side.points .side.place}] }
            3 { viewer::display toggle [pick {wireframe textures normals skeleton points mirror}] }
            4 { for {set step 0} {$step < 5} {incr step} { viewer::playback step [pick {1 -1}] } }
            5 { viewer::playback mark_range [pick {first last}] }
            6 { viewer::documents reload }
            7 { viewer::view aim [pick {north down 45,-30}]; viewer::view fit }
            8 { viewer::display change_lod [pick {1 -1}] }
        }
        update
    }
    viewer::playback stop
}

proc reading::all_rows {parent} {
    set rows {}
    foreach row [.side.tree children $parent] { lappend rows $row {*}[all_rows $row] }
    return $rows
}

# ---- one round -----------------------------------------------------------------------------------------------------

# Findings of one round, each a text. Given a kind of input, and a text of it, it is about these.
proc reading::round {seed number {kind {}} {text {}}} {
    variable given $text
    variable started {}
    variable errors {}
    variable input
    variable canary
    variable LONGEST
    variable KINDS
    begin_chance $seed $number
    if {$kind eq {}} { set kind [pick $KINDS] }
    clear_input
    set begun [clock milliseconds]
    set found {}
    if {[catch { set found [round_of $kind] } message options]} {
        lappend found "an error: [dict get $options -errorinfo]"
    }
    update
    foreach error $errors { lappend found "an error that came to nobody: $error" }
    foreach words $started { lappend found "a program was started: $words" }
    if {[file exists $canary]} { lappend found "a text out of the input was run" }
    if {[children] > 0} { lappend found "a process is left" }
    set lasted [expr {[clock milliseconds] - $begun}]
    if {$lasted > $LONGEST} { lappend found "it took $lasted milliseconds" }
    lappend found {*}[changes_outside] {*}[too_much_memory]
    return [lmap text $found { string cat "$kind: " $text }]
}

proc reading::round_of {kind} {
    variable input
    variable seeds
    viewer::notices hide
    if {$kind eq "settings"} {
        set path [viewer::settings path]
        keep_input $path [write viewer.conf [settings_text]]
        return [read_settings $path]
    }
    if {$kind eq "start"} {
        keep_input [viewer::settings path] [write viewer.conf [settings_text]]
        return [start_viewer]
    }
    if {$kind eq "recent"} {
        write_scene list
        set entries [lmap index {1 2 3} { pick [list [nasty_word] [file join $input walk.scene] [nasty_word]] }]
        note_input $entries
        # As reading the settings does.
        if {![viewer::settings is_good recent $entries]} { return {} }
        viewer::settings keep recent $entries
        viewer::menus::fill recent .menu.file.recent
        set found {}
        foreach index {0 1 2} {
            viewer::notices hide
            .menu.file.recent invoke $index
            update
            set entry [lindex $entries $index]
            if {$entry ne {} && ![winfo ismapped .noticebad] && [viewer::status message] eq {}} {
                lappend found "neither a scene nor a notice: $entry"
            }
        }
        viewer::settings keep recent {}
        return $found
    }
    set path [write_scene $kind]
    note_input $path
    set found [open_file [pick {open open add}] $path]
    use_scene
    if {[chance 4] == 0} {
        write_scene $kind
        watch_outside
        viewer::documents reload
        use_scene
    }
    sorvel reset
    viewer::scene look_again
    viewer::scene changed
    return $found
}

# ---- around the rounds ---------------------------------------------------------------------------------------------

# To be called when the viewer runs. All files lie in that folder; the models are those of the project.
proc reading::prepare {folder root} {
    variable input
    variable outside
    variable canary
    variable seeds
    variable program
    set program [file join $root app viewer.tcl]
    set input [file join $folder input]
    set outside [file join $folder outside]
    set canary [file join $folder canary]
    file mkdir $input $outside
    read_seeds $root
    foreach {name text} $seeds(scene) {
        set channel [open [file join $outside $name] w]
        fconfigure $channel -translation binary
        puts -nonewline $channel $text
        close $channel
    }
    # Whatever starts a program in Tcl comes through these two.
    rename ::exec ::reading::own_exec
    rename ::open ::reading::own_open
    proc ::exec {args} {
        lappend ::reading::started [concat exec $args]
        error "no program is started here"
    }
    proc ::open {name args} {
        if {[string match {|*} $name]} {
            lappend ::reading::started $name
            error "no program is started here"
        }
        return [::reading::own_open $name {*}$args]
    }
    proc ::bgerror {message} { lappend ::reading::errors $::errorInfo }
    # Nothing is edited, so that nothing is to be asked.
    proc ::viewer::questions::ask_yes {args} {
        lappend ::reading::errors "a question: $args"
        return 1
    }
    # Drawn once a round, not at every change.
    wm geometry . 620x460+0+0
    update
}

# What the test itself needs of them again.
proc reading::give_back {} {
    rename ::exec {}
    rename ::open {}
    rename ::reading::own_exec ::exec
    rename ::reading::own_open ::open
}

proc reading::file_bytes {path} {
    set channel [open [file normalize $path]]
    fconfigure $channel -translation binary
    set bytes [read $channel]
    close $channel
    return $bytes
}

# The files of the corpus and of the samples. Those that failed once stand in tests/data/fuzz/viewer.
proc reading::read_seeds {root} {
    variable seeds
    array set seeds {settings {} list {} model {} scene {}}
    foreach folder {tests/fuzz/corpus/viewer tests/data/fuzz/viewer} {
        foreach path [lsort [glob -nocomplain -directory [file join $root $folder] settings-* list-* model-*]] {
            lappend seeds([lindex [split [file tail $path] -] 0]) [file_bytes $path]
        }
    }
    foreach name {figure.mod lantern.mod walk.clip swing.clip walk.scene} {
        lappend seeds(scene) $name [file_bytes [file join $root models $name]]
    }
    foreach name {duck knot lantern} { lappend seeds(model) [file_bytes [file join $root models $name.mod]] }
    lappend seeds(list) [dict get $seeds(scene) walk.scene]
    lappend seeds(scene) skinned.mod [lindex $seeds(model) 0] skin.tga [tga]
}

# A picture of four pixels each way.
proc reading::tga {} {
    return [binary format ccccccccccccsscc 0 0 2 0 0 0 0 0 0 0 0 0 4 4 24 0][string repeat \x10\x80\xf0 16]
}

proc reading::clear_input {} {
    variable input
    variable canary
    file delete -force $input $canary
    file mkdir $input
    if {$::tcl_platform(platform) ne "windows"} { catch { own_exec mkfifo [file join $input pipe] } }
    watch_outside
}

# The settings file is one of the round, too.
proc reading::keep_input {path source} {
    file mkdir [file dirname $path]
    file delete -force $path {*}[glob -nocomplain $path.damaged*]
    file copy -force $source $path
    watch_outside
}

proc reading::note_input {text} {
    write how.txt $text
    watch_outside
}

# What lies in the folders that nothing may change, with its time and size.
proc reading::listing {folder} {
    set found {}
    set shown [glob -nocomplain -directory $folder *]
    foreach path [lsort [concat $shown [glob -nocomplain -types hidden -directory $folder *]]] {
        if {[file tail $path] in {. ..}} continue
        file lstat $path status
        lappend found $path $status(type) [expr {$status(type) eq "file" ? "$status(mtime) $status(size)" : {}}]
        if {$status(type) eq "directory"} { lappend found {*}[listing $path] }
    }
    return $found
}

proc reading::watch_outside {} {
    variable input
    variable outside
    variable listed
    set listed [list [listing $outside] [listing $input] [listing $::env(HOME)] [pwd]]
}

proc reading::changes_outside {} {
    variable input
    variable outside
    variable listed
    set now [list [listing $outside] [listing $input] [listing $::env(HOME)] [pwd]]
    if {$now eq $listed} { return {} }
    return [list "something changed outside: [diff_of [concat {*}$listed] [concat {*}$now]]"]
}

proc reading::diff_of {before now} {
    return [concat [lmap word $before { expr {$word in $now ? [continue] : "-$word"} }] \
        [lmap word $now { expr {$word in $before ? [continue] : "+$word"} }]]
}

# Processes that belong to this one, where the system tells.
proc reading::children {} {
    set ids {}
    foreach path [glob -nocomplain /proc/[pid]/task/*/children] { catch { lappend ids {*}[file_bytes $path] } }
    return [llength $ids]
}

proc reading::too_much_memory {} {
    variable MOST_MEMORY
    if {[catch { file_bytes /proc/[pid]/status } text] || ![regexp {VmRSS:\s+(\d+)} $text -> held]} { return {} }
    return [expr {$held > $MOST_MEMORY ? [list "the process holds $held kilobytes"] : {}}]
}

# Rounds until so many seconds are over, or so many of them. Stops at the first that finds something, whose files are left
# in a folder of findings: a list of the number of rounds and of the findings.
proc reading::rounds {seed seconds most findings {first 1}} {
    variable input
    set end [expr {[clock milliseconds] + 1000 * $seconds}]
    for {set number $first} {$number < $first + $most && [clock milliseconds] < $end} {incr number} {
        # Should the process end here, this tells where.
        if {$findings ne {}} { note $findings "$seed $number" }
        set found [round $seed $number]
        if {[llength $found] == 0} continue
        if {$findings ne {}} { keep_finding $findings $seed $number $found }
        return [list $number $found]
    }
    if {$findings ne {}} { file delete [file join $findings viewer-now] }
    return [list [expr {$number - $first}] {}]
}

proc reading::note {folder text} {
    set channel [own_open [file join $folder viewer-now] w]
    puts $channel "PELT_FUZZ_SEED and PELT_FUZZ_ROUND: $text"
    close $channel
}

proc reading::keep_finding {folder seed number found} {
    variable input
    set kept [file join $folder viewer-$seed-$number]
    file delete -force $kept
    file delete [file join $input pipe]
    file copy $input $kept
    set channel [own_open [file join $kept finding.txt] w]
    puts $channel "seed $seed, round $number\n[join $found \n]"
    close $channel
}
