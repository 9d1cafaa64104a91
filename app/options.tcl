# The command line. One table says what every option takes, what its value must look like and what the help tells of it,
# so that the parser, the checks and the help cannot differ.
#
# Owns: option, given
# Offers: read_words, check, make_whole, get, given, is_batch, names_a_folder, usage, die, flags, named_views,
#     size_limits, picture_endings
# Calls: files, numbers

namespace eval viewer::options {
    namespace export read_words check make_whole get given is_batch names_a_folder usage die flags named_views \
        size_limits picture_endings
    namespace ensemble create
    variable option     ;# value of each option
    variable given      ;# 1 for the options that stood on the command line
    variable PICTURE_ENDINGS {.png .tga}
    variable SIZE_LIMITS {20 3000}
    variable FLAGS {triangles lines curves points normals skeleton wireframe quadlines backfaces mirror textures
        transparency reflect gouraud lighting pnfilter smooth}

    # Where each named view turns and tilts the scene, in degrees.
    variable NAMED_VIEWS {down {0 0} up {0 -180} south {180 -90} north {0 -90} east {90 -90} west {-90 -90}}

    # name, what stands behind it ("" for a switch), value when it is not given, how often it may stand, check, help
    variable OPTIONS {
        output         FILE|DIR/   {}             once  check_output
            {write a picture (.png or .tga) without showing a window; a directory
             gets one picture for each model, named after it}
        turntable      N           {}             once  check_turntable
            {write N numbered pictures, once round the upright axis}
        frames         A:B:C       {}             once  check_frames
            {write numbered pictures of the animation from A to B seconds, C for each
             second}
        contact-sheet  FILE        {}             once  check_sheet
            {put all models on one page, with their names}
        size           WxH         960x640        once  check_size
            {size of the pictures or of the view, 20 to 3000 each}
        view           NAME|A,B    -32,-68        once  check_view
            {down, up, north, south, east, west, or turn and tilt in degrees}
        rotate         A,B         0,0            once  check_rotate
            {turn and tilt further by so many degrees}
        zoom           FACTOR      1.0            once  check_zoom
            {larger shows more, 0.001 to 100}
        background     R,G,B       0.16,0.18,0.21 once  check_background
            {three numbers from 0 to 1}
        display        FLAG=VALUE  {}             often check_display
            {switch something that is shown on or off, for example wireframe=on}
        lod            N           {}             once  check_lod
            {fineness of curved surfaces, 0 to 6}
        animate        FILE        {}             once  {}
            {open a scene list; in the window it plays (space stops and starts)}
        timings        {}          0              once  {}
            {tell on standard error what each picture took}
        help           {}          0              once  {}
            {this text}
    }
}

# ---- asking --------------------------------------------------------------------------------------------------------

proc viewer::options::get {name} {
    variable option
    return $option($name)
}

# Whether an option stood on the command line.
proc viewer::options::given {name} {
    variable given
    return $given($name)
}

proc viewer::options::flags {} {
    variable FLAGS
    return $FLAGS
}

proc viewer::options::named_views {} {
    variable NAMED_VIEWS
    return $NAMED_VIEWS
}

# The least and the most pixels of a picture each way.
proc viewer::options::size_limits {} {
    variable SIZE_LIMITS
    return $SIZE_LIMITS
}

proc viewer::options::picture_endings {} {
    variable PICTURE_ENDINGS
    return $PICTURE_ENDINGS
}

# Whether pictures are made without showing a window.
proc viewer::options::is_batch {} {
    variable given
    return [expr {$given(output) || $given(contact-sheet)}]
}

proc viewer::options::names_a_folder {name} {
    return [expr {[string match {*[/\\]} $name] || [file isdirectory $name]}]
}

proc viewer::options::usage {} {
    variable OPTIONS
    variable FLAGS
    set text "usage: ./viewer \[options\] \[file...\]\n\n"
    foreach {name value default often check help} $OPTIONS {
        set left "  [string trimright "--$name $value"]"
        foreach line [split $help \n] {
            append text [format "%-27s%s\n" $left [string trim $line]]
            set left {}
        }
    }
    append text "\nIn the window the first file opens and the others are added; without a file the sample\n"
    append text "scene opens.\n"
    append text "--display may be given several times. Its flags:\n  [lrange $FLAGS 0 8]\n  [lrange $FLAGS 9 end]\n"
    append text "Exit status: 0, 1 when a model failed (the others are done all the same), 2 for wrong use."
    return $text
}

proc viewer::options::die {text {status 2}} {
    puts stderr "viewer: $text"
    exit $status
}

# ---- reading -------------------------------------------------------------------------------------------------------

# Takes the words of the command line apart and gives the files among them.
proc viewer::options::read_words {words} {
    variable option
    variable given
    set files [split_words $words]
    # A scene list among the files is one to open as such.
    if {[llength $files] == 1 && [string tolower [file extension [lindex $files 0]]] eq ".scene" && !$given(animate)} {
        lassign $files option(animate)
        set given(animate) 1
        return {}
    }
    return $files
}

# Fills "option" and "given" from these words and gives the files among them.
proc viewer::options::split_words {words} {
    variable option
    variable given
    variable OPTIONS
    array unset option
    array unset given
    foreach {name value default often check help} $OPTIONS {
        set option($name) $default
        set given($name) 0
        set takes_value($name) [expr {$value ne {}}]
        set is_list($name) [expr {$often eq "often"}]
    }
    set files {}
    while {[llength $words] > 0} {
        set words [lassign $words word]
        if {$word eq "--"} { return [concat $files $words] }
        if {![string match --* $word]} {
            lappend files $word
            continue
        }
        set has_value [regexp {^--([^=]*)=(.*)$} $word -> name value]
        if {!$has_value} { set name [string range $word 2 end] }
        if {![info exists option($name)]} { die "unknown option --$name (see --help)" }
        if {!$takes_value($name)} {
            if {$has_value} { die "option --$name takes no value" }
            set value 1
        } elseif {!$has_value} {
            if {[llength $words] == 0} { die "option --$name needs a value" }
            set words [lassign $words value]
        }
        if {$is_list($name)} {
            lappend option($name) $value
        } elseif {$given($name)} {
            die "option --$name stands twice"
        } else {
            set option($name) $value
        }
        set given($name) 1
    }
    return $files
}

# The files are named from where the program was started; opening a scene list goes elsewhere. Gives those that it was
# given as whole names.
proc viewer::options::make_whole {files} {
    variable option
    foreach name {output animate contact-sheet} {
        if {$option($name) eq {}} continue
        # The mark of a directory would go.
        set mark [expr {[names_a_folder $option($name)] ? "/" : {}}]
        set option($name) [viewer::files whole_path $option($name)]$mark
    }
    return [lmap file $files { viewer::files whole_path $file }]
}

# ---- checking ------------------------------------------------------------------------------------------------------

# Ends the program with status 2 when a value cannot be used, and puts the parsed values beside the texts.
proc viewer::options::check {files} {
    variable option
    variable given
    variable OPTIONS
    foreach {name value default often check help} $OPTIONS {
        if {$check ne {} && ($given($name) || $default ne {})} { $check $option($name) }
    }
    if {$option(turntable) ne {} && $option(frames) ne {}} { die "--turntable and --frames exclude each other" }
    foreach name {turntable frames timings} {
        if {$given($name) && ![is_batch]} { die "--$name needs --output" }
    }
    foreach name {turntable frames} {
        if {$given($name) && !$given(output)} { die "--$name needs --output" }
    }
    if {$option(frames) ne {} && $option(animate) eq {}} { die "--frames needs --animate" }
    if {$option(animate) ne {} && [llength $files] > 0} { die "--animate excludes further files" }
    if {$option(animate) ne {} && $given(contact-sheet)} { die "--animate and --contact-sheet exclude each other" }
    if {$given(animate) && $option(animate) eq {}} { die "--animate needs a file" }
}

proc viewer::options::check_output {value} {
    variable PICTURE_ENDINGS
    if {$value eq {}} { die "--output needs a name" }
    if {![names_a_folder $value] && [string tolower [file extension $value]] ni $PICTURE_ENDINGS} {
        die "--output needs a name that ends in .png or .tga, or a directory (which ends in /)"
    }
}

proc viewer::options::check_sheet {value} {
    variable PICTURE_ENDINGS
    if {[string tolower [file extension $value]] ni $PICTURE_ENDINGS} {
        die "--contact-sheet needs a name that ends in .png or .tga"
    }
}

proc viewer::options::check_turntable {value} {
    if {![regexp {^[0-9]{1,5}$} $value] || [scan $value %d] < 1} { die "--turntable needs a number of pictures" }
}

# From, to and rate become option(first), option(last), option(rate).
proc viewer::options::check_frames {value} {
    variable option
    set time {([0-9]{1,6}(?:\.[0-9]{1,6})?)}
    if {![regexp "^$time:$time:(\[0-9\]{1,2})\$" $value -> first last rate]} {
        die "--frames needs from, to and pictures for each second, as in 0:2:25"
    }
    lassign [scan "$first $last $rate" "%f %f %d"] first last rate
    if {$rate < 1 || $rate > 60} { die "--frames needs 1 to 60 pictures for each second" }
    if {$last < $first} { die "--frames ends before it begins" }
    array set option [list first $first last $last rate $rate]
}

proc viewer::options::check_size {value} {
    variable option
    variable SIZE_LIMITS
    lassign $SIZE_LIMITS least most
    if {![regexp {^([0-9]{1,4})x([0-9]{1,4})$} $value -> width height] || [scan $width %d] < $least
        || [scan $height %d] < $least || [scan $width %d] > $most || [scan $height %d] > $most} {
        die "--size needs two numbers from $least to $most, as in 960x640"
    }
    array set option [list width [scan $width %d] height [scan $height %d]]
}

proc viewer::options::check_view {value} {
    variable NAMED_VIEWS
    variable option
    if {![dict exists $NAMED_VIEWS $value] && ![viewer::numbers are $value 2]} {
        die "--view needs a name ([join [dict keys $NAMED_VIEWS] {, }]) or two angles, as in 24,-72"
    }
    if {![dict exists $NAMED_VIEWS $value]} { set option(view) [viewer::numbers decimals $value] }
}

proc viewer::options::check_rotate {value} {
    variable option
    if {![viewer::numbers are $value 2]} { die "--rotate needs two angles, as in 30,0" }
    set option(rotate) [viewer::numbers decimals $value]
}

proc viewer::options::check_zoom {value} {
    variable option
    set good [viewer::numbers are $value 1]
    if {$good} { set value [viewer::numbers decimals $value] }
    if {!$good || $value < 0.001 || $value > 100} { die "--zoom needs a number from 0.001 to 100" }
    set option(zoom) $value
}

proc viewer::options::check_background {value} {
    variable option
    set good [viewer::numbers are $value 3]
    if {$good} {
        set value [viewer::numbers decimals $value]
        foreach part [split $value ,] {
            if {$part < 0 || $part > 1} { set good 0 }
        }
    }
    if {!$good} { die "--background needs three numbers from 0 to 1, as in 0,0,0.2" }
    set option(background) $value
}

proc viewer::options::check_display {values} {
    variable FLAGS
    foreach value $values {
        if {![regexp {^(\w+)=(on|off|true|false|0|1)$} $value -> flag setting]} {
            die "--display needs a flag and on or off, as in wireframe=on"
        }
        if {$flag ni $FLAGS} { die "--display knows no flag $flag; it knows [join $FLAGS {, }]" }
    }
}

proc viewer::options::check_lod {value} {
    if {![regexp {^[0-6]$} $value]} { die "--lod needs a number from 0 to 6" }
}
