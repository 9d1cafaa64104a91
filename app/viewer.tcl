# The viewer: a window on the library, which it drives through the command sorvel alone.

set ::app_root [file dirname [file normalize [info script]]]

proc usage {} {
    return {usage: ./viewer [options] [file...]

  --output FILE     render without showing a window, write FILE (.png or .tga) and print its name
  --size WxH        size of the picture or of the view (960x640)
  --view NAME       down, up, north, south, east, west, or ANGLE,PITCH in degrees
  --zoom FACTOR     larger shows more (1.0)
  --background RGB  three numbers from 0 to 1, separated by commas
  --animate FILE    open a scene list and play it in a loop (space stops and starts)
  --help            this text

The first file opens, the others are added. Without a file the sample scene opens.}
}

# ---- command line --------------------------------------------------------------------------------------------------

proc die {text {status 2}} {
    puts stderr "viewer: $text"
    exit $status
}

# What every view starts from: the sample scene and most models stand upright along z.
array set ::option {output {} size 960x640 view -32,-68 zoom 1.0 background 0.16,0.18,0.21 animate {}}

proc read_command_line {words} {
    set files {}
    while {[llength $words] > 0} {
        set words [lassign $words word]
        if {$word eq "--help"} {
            puts [usage]
            exit 0
        }
        if {$word eq "--"} {
            return [concat $files $words]
        }
        if {![string match --* $word]} {
            lappend files $word
            continue
        }
        if {[regexp {^--([a-z]+)=(.*)$} $word -> name value]} {
        } else {
            set name [string range $word 2 end]
            if {[llength $words] == 0} { die "option $word needs a value" }
            set words [lassign $words value]
        }
        if {![info exists ::option($name)]} { die "unknown option --$name (see --help)" }
        set ::option($name) $value
    }
    return $files
}

proc check_options {} {
    global option
    if {![regexp {^(\d{1,4})x(\d{1,4})$} $option(size) -> width height] || $width < 20 || $height < 20
        || $width > 3000 || $height > 3000} {
        die "--size needs two numbers from 20 to 3000, as in 960x640"
    }
    set option(width) $width
    set option(height) $height
    if {$option(view) ni {down up north south east west}
        && ![regexp {^-?\d+(\.\d+)?,-?\d+(\.\d+)?$} $option(view)]} {
        die "--view needs a name (down, up, north, south, east, west) or two angles, as in 24,-72"
    }
    if {![regexp {^\d+(\.\d+)?$} $option(zoom)]} { die "--zoom needs a number" }
    if {![regexp {^[\d.]+,[\d.]+,[\d.]+$} $option(background)]} { die "--background needs three numbers, as in 0,0,0.2" }
    if {$option(output) ne {} && [string tolower [file extension $option(output)]] ni {.png .tga}} {
        die "--output needs a name that ends in .png or .tga"
    }
}

set files [read_command_line $argv]
check_options

# --help needs no Tk; everything from here on does.
if {[catch {package require Tk} message]} { die $message 1 }
set library [expr {[info exists ::env(PELT_LIBRARY)] ? $::env(PELT_LIBRARY)
    : [file join [file dirname $::app_root] build libpelt[info sharedlibextension]]}]
if {[file exists $library]} {
    load $library Sorvel
} elseif {[catch {package require pelt} message]} {
    die "the library is not built: $library" 1
}

# ---- messages ------------------------------------------------------------------------------------------------------

# The library tells of a failed load in several boxes. While quiet is set they are gathered, to be told once.
set ::quiet 0
set ::gathered {}
rename tk_messageBox show_message_box
proc tk_messageBox {args} {
    if {!$::quiet} { return [show_message_box {*}$args] }
    if {[dict exists $args -message]} { lappend ::gathered [dict get $args -message] }
    return ok
}

# Runs a command of the library. The texts of its boxes come back as the second element.
proc quietly {args} {
    set ::quiet 1
    set ::gathered {}
    set result [{*}$args]
    set ::quiet 0
    return [list $result $::gathered]
}

# ---- files ---------------------------------------------------------------------------------------------------------

# The library cuts its words at blanks. A name with blanks is reached through a folder of links without them: the
# model's neighbours are linked too, because images and child models are looked for beside it.
set ::link_folders {}
proc plain_path {path} {
    set path [file normalize $path]
    if {![regexp {\s} $path]} { return $path }
    set base [expr {[info exists ::env(TMPDIR)] && ![regexp {\s} $::env(TMPDIR)] ? $::env(TMPDIR) : "/tmp"}]
    set folder [file join $base pelt-[pid]-[llength $::link_folders]]
    file mkdir $folder
    lappend ::link_folders $folder
    foreach neighbour [glob -nocomplain -directory [file dirname $path] *] {
        catch {file link -symbolic [file join $folder [file tail $neighbour]] $neighbour}
    }
    set plain [file join $folder [regsub -all {\s} [file tail $path] _]]
    if {![file exists $plain]} { catch {file link -symbolic $plain $path} }
    return $plain
}

proc remove_links {} {
    foreach folder $::link_folders { catch {file delete -force $folder} }
}

# Opens or adds a file. 1, or 0 after telling why (once).
proc load_file {verb path} {
    if {![file exists $path]} {
        tell_failure "There is no file $path"
        return 0
    }
    # From here on the name that the user sees and the one that the library gets may differ.
    lassign [quietly sorvel file $verb [plain_path $path]] id texts
    if {![string is integer -strict $id] || $id < 1} {
        tell_failure "[file tail $path] could not be loaded.\n\n[lindex $texts 0]"
        draw_soon
        return 0
    }
    if {$verb eq "open"} {
        aim $::option(view)
        sorvel set view zoom $::option(zoom)
        wm title . "[file tail $path] - pelt"
    }
    draw_soon
    return 1
}

proc tell_failure {text} {
    if {$::option(output) ne {}} {
        puts stderr "viewer: [regsub -all {\s+} $text { }]"
        return
    }
    show_message_box -type ok -icon error -title pelt -message $text
}

# The view as a turntable: the model turns about its own upright axis (z) and is then tilted towards the viewer, so
# that what stands upright stays so. The library's free rotation holds the matrix.
array set ::named_view {down {0 0} up {0 -180} south {180 -90} north {0 -90} east {90 -90} west {-90 -90}}
set ::turn 0.0
set ::tilt 0.0

proc aim {view} {
    if {[info exists ::named_view($view)]} {
        lassign $::named_view($view) ::turn ::tilt
    } else {
        lassign [split $view ,] ::turn ::tilt
    }
    show_turn
}

proc show_turn {} {
    set a [expr {$::turn * acos(-1.0) / 180}]
    set b [expr {$::tilt * acos(-1.0) / 180}]
    lassign [list [expr {cos($a)}] [expr {sin($a)}] [expr {cos($b)}] [expr {sin($b)}]] ca sa cb sb
    set matrix [list $ca [expr {-$sa}] 0 0 [expr {$cb * $sa}] [expr {$cb * $ca}] [expr {-$sb}] 0 \
        [expr {$sb * $sa}] [expr {$sb * $ca}] $cb 0 0 0 0 1]
    sorvel set matrix view {*}[lmap number $matrix {format %.6f $number}]
    draw_soon
}

# Opens a scene list. Its paths are taken from the folder that it lies in.
proc load_animation {path} {
    if {![file exists $path]} {
        tell_failure "There is no file $path"
        return 0
    }
    set plain [plain_path $path]
    cd [file dirname $plain]
    lassign [quietly sorvel animate open [file tail $plain]] count texts
    if {$count ne "1"} {
        tell_failure "[file tail $path] could not be loaded.\n\n[lindex $texts 0]"
        return 0
    }
    aim $::option(view)
    sorvel set view zoom $::option(zoom)
    sorvel animate step $::steps_per_second
    wm title . "[file tail $path] - pelt"
    draw_soon
    return 1
}

# Plays without a timer of the library's own: each step asks for the next one, at the rate chosen, by the clock.
set ::steps_per_second 30
set ::playing 0
proc play {} {
    if {!$::playing} return
    set now [clock milliseconds]
    sorvel animate next
    sorvel draw
    after [expr {max(1, 1000 / $::steps_per_second - ([clock milliseconds] - $now))}] play
}

proc play_or_pause {} {
    if {$::option(animate) eq {}} return
    set ::playing [expr {!$::playing}]
    after cancel play
    play
}

# ---- pictures ------------------------------------------------------------------------------------------------------

proc save_picture {path} {
    set plain $path
    set temporary {}
    if {[regexp {\s} $path] || [string tolower [file extension $path]] eq ".png"} {
        set temporary [file join /tmp pelt-[pid]-[clock clicks].tga]
        set plain $temporary
    }
    sorvel draw
    sorvel file savescreen $plain
    if {![file exists $plain]} { return 0 }
    if {[string tolower [file extension $path]] eq ".png"} {
        set image [picture_of_tga $plain]
        set written [expr {![catch {$image write $path -format png} message]}]
        image delete $image
    } elseif {$temporary ne {}} {
        set written [expr {![catch {file copy -force $temporary $path} message]}]
    } else {
        set written 1
    }
    if {$temporary ne {}} { file delete $temporary }
    if {!$written} { tell_failure "The picture could not be saved: $message" }
    return $written
}

# A Tk photo of a picture that the library saved. Its bytes run from the lower left as blue, green, red; all of them
# turned round run from the upper right as red, green, blue, so that only the columns have to change sides.
proc picture_of_tga {path} {
    set channel [open $path rb]
    set bytes [read $channel]
    close $channel
    binary scan $bytes cu id_length
    binary scan $bytes @12susu width height
    set pixels [string range $bytes [expr {18 + $id_length}] end]
    set turned [image create photo -data "P6\n$width $height\n255\n[string reverse $pixels]" -format ppm]
    set picture [image create photo]
    $picture copy $turned -subsample -1 1
    image delete $turned
    return $picture
}

# ---- window --------------------------------------------------------------------------------------------------------

# However many events ask for a picture, one is drawn when they have been served.
set ::draw_pending 0
proc draw_soon {} {
    if {$::draw_pending} return
    set ::draw_pending 1
    after idle {
        set ::draw_pending 0
        if {[winfo exists .view]} { sorvel draw }
    }
}

# The mouse procedure of the library: a drag comes with its movement, everything else with zeros.
proc on_mouse {button x y dx dy} {
    if {$dx == 0 && $dy == 0} return
    switch $button {
        1 {
            set ::turn [expr {fmod($::turn + $dx * 0.4, 360.0)}]
            set ::tilt [expr {min(90.0, max(-180.0, $::tilt + $dy * 0.4))}]
            show_turn
        }
        2 {
            zoom_by [expr {pow(1.01, $dy)}]
        }
        3 {
            sorvel set view pan $dx $dy
        }
        default return
    }
    draw_soon
}

proc zoom_by {factor} {
    set zoom [string trim [sorvel get zoom]]
    sorvel set view zoom [format %.6f [expr {$zoom * $factor}]]
    draw_soon
}

# The status procedure: "Time: ... Triangles: ..., text", or a bare text.
proc on_status {args} {
    set ::status_text [join $args { }]
}

proc toggle {flag} {
    sorvel display $flag $::flag($flag)
    draw_soon
}

proc choose_and_load {verb} {
    set title [expr {$verb eq "open" ? "Open model" : "Add model"}]
    set path [tk_getOpenFile -title $title -filetypes {{Models {.mod .MOD}} {{All files} *}}]
    if {$path ne {}} { load_file $verb $path }
}

proc choose_and_save {} {
    set path [tk_getSaveFile -title "Save picture" -defaultextension .png \
        -filetypes {{{PNG pictures} .png} {{TGA pictures} .tga}}]
    if {$path eq {}} return
    update
    if {[save_picture $path]} { on_status Saved [file tail $path] }
}

proc reload {} {
    lassign [quietly sorvel reload] result texts
    if {[llength $texts] > 0} { tell_failure "The scene could not be loaded again.\n\n[lindex $texts 0]" }
    draw_soon
}

proc fit {} {
    sorvel set view centre
    sorvel set pan 0 0
    sorvel set view zoom 1.0
    draw_soon
}

proc build_menus {} {
    option add *tearOff 0
    menu .menu
    menu .menu.file
    .menu add cascade -label File -underline 0 -menu .menu.file
    foreach {label keys event command} {
        "Open..." Ctrl+O <Control-o> {choose_and_load open}
        "Add..." Ctrl+A <Control-a> {choose_and_load add}
        "Reload" F5 <F5> reload
        - - - -
        "Save picture..." Ctrl+S <Control-s> choose_and_save
        - - - -
        "Quit" Ctrl+Q <Control-q> {destroy .}
    } {
        if {$label eq "-"} {
            .menu.file add separator
            continue
        }
        .menu.file add command -label $label -accelerator $keys -command $command
        bind . $event $command
    }
    menu .menu.view
    .menu add cascade -label View -underline 0 -menu .menu.view
    foreach {label key view} {
        North 1 north South 2 south East 3 east West 4 west "From above" 5 down "From below" 6 up
    } {
        .menu.view add command -label $label -accelerator $key -command [list aim $view]
        bind . <Key-$key> [list aim $view]
    }
    .menu.view add separator
    .menu.view add command -label "Start view" -accelerator Home -command {aim $::option(view)}
    bind . <Home> {aim $::option(view)}
    .menu.view add command -label Fit -accelerator F -command fit
    bind . <f> fit
    menu .menu.display
    .menu add cascade -label Display -underline 0 -menu .menu.display
    foreach {label flag key} {
        Triangles triangles {} Wireframe wireframe w Points points p Lines lines {} Skeleton skeleton {}
        Normals normals n Textures textures t Transparency transparency {} Mirror mirror m Reflection reflect r
        Gouraud gouraud g Lighting lighting l Curves curves c "Back faces" backfaces b
    } {
        set ::flag($flag) [expr {[sorvel display $flag] eq "on"}]
        .menu.display add checkbutton -label $label -variable ::flag($flag) -command [list toggle $flag]
        if {$key eq {}} continue
        .menu.display entryconfigure end -accelerator [string toupper $key]
        bind . <$key> "set ::flag($flag) \[expr {!\$::flag($flag)}\]; toggle $flag"
    }
    . configure -menu .menu
}


proc build_window {} {
    global option
    wm title . pelt
    catch {ttk::style theme use clam}
    # The frame belongs to the library: without a background of its own nothing flickers beneath the picture.
    frame .view -width $option(width) -height $option(height) -background {}
    ttk::frame .bar
    ttk::label .status -textvariable ::status_text -anchor w -padding {8 3}
    ttk::label .hint -anchor e -padding {8 3} -text "drag turns \u00b7 right drag pans \u00b7 wheel zooms"
    grid .view -sticky nsew
    grid .bar -sticky ew
    pack .hint -in .bar -side right
    pack .status -in .bar -side left -fill x -expand 1
    grid rowconfigure . 0 -weight 1
    grid columnconfigure . 0 -weight 1
    wm minsize . 320 240
    bind .view <Button-4> {zoom_by 0.9}
    bind .view <Button-5> {zoom_by [expr {1 / 0.9}]}
    bind .view <MouseWheel> {zoom_by [expr {pow(0.9, %D / 120.0)}]}
    bind .view <Destroy> remove_links
}

proc open_view {} {
    update
    sorvel callback status on_status
    sorvel callback mouse on_mouse
    sorvel create window view .view
    lassign [split $::option(background) ,] red green blue
    sorvel set background $red $green $blue
    sorvel set freerotate on
}

# ---- start ---------------------------------------------------------------------------------------------------------

proc show_files {files} {
    set good 1
    set verb open
    foreach file $files {
        if {[load_file $verb $file]} { set verb add } else { set good 0 }
    }
    return $good
}

proc render_to_file {files} {
    global option
    # The view's border, which a picture leaves out, and the steps of four pixels in which its size goes.
    .view configure -width [expr {($option(width) + 3) / 4 * 4 + 2}] -height [expr {($option(height) + 3) / 4 * 4 + 2}]
    wm geometry . +0+0
    open_view
    set good [expr {$option(animate) ne {} ? [load_animation $option(animate)] : [show_files $files]}]
    update
    if {![save_picture $option(output)]} { die "$option(output) could not be written" 1 }
    puts [file normalize $option(output)]
    remove_links
    exit [expr {$good ? 0 : 1}]
}

foreach name {output animate} {
    if {$option($name) ne {}} { set option($name) [file normalize $option($name)] }
}
if {[llength $files] == 0} {
    set sample [file join [file dirname $::app_root] models mill.mod]
    if {[file exists $sample]} { set files [list $sample] }
}
set ::status_text {}
build_window
if {$option(output) ne {}} {
    render_to_file $files
} else {
    build_menus
    open_view
    if {$option(animate) eq {}} {
        show_files $files
    } elseif {[load_animation $option(animate)]} {
        bind . <space> play_or_pause
        play_or_pause
    }
}
