# The contact sheet: small pictures of all models on one page, each with its name below.
#
# Owns: glyph_width, glyph_map
# Offers: make
# Calls: glyphs, options, pictures, report, scene, stage, view

namespace eval viewer::sheet {
    namespace export make
    namespace ensemble create
    variable glyph_width         ;# in pixels, by the code of the letter
    variable glyph_map           ;# the shades of its pixels, likewise
    variable CELL 240            ;# width of a picture on the page, in pixels; its height follows --size
    variable GAP 16
    variable MOST 8000           ;# pixels of the page each way
    variable PAPER {30 33 38}
    variable INK {216 220 226}
}

proc viewer::sheet::make {files} {
    variable CELL
    set width $CELL
    set height [expr {max(20, $CELL * [viewer::options get height] / [viewer::options get width])}]
    set sheet [page [llength $files] $width $height]
    viewer::stage resize $width $height
    set index -1
    foreach file $files {
        incr index
        set photo {}
        if {[viewer::scene bring open $file] eq {}} {
            # A model that failed for its own picture was told then.
            if {![viewer::options names_a_folder [viewer::options get output]]} { viewer::report scene_failed }
        } else {
            viewer::view start
            viewer::view draw_now
            if {![catch { viewer::pictures capture } captured]} {
                set photo [viewer::pictures photo_of_tga $captured $width $height]
            }
        }
        cell $sheet $index $photo [file rootname [file tail $file]]
        if {$photo ne {}} { image delete $photo }
        viewer::report cell_done $file
    }
    set path [viewer::options get contact-sheet]
    set message [viewer::pictures write_photo [dict get $sheet photo] $path]
    viewer::report sheet_done $path $message
}

# An empty page with room for so many pictures: about as wide as it is high, and never beyond the largest.
proc viewer::sheet::page {count width height} {
    variable GAP
    variable MOST
    variable PAPER
    set cell_width [expr {$width + $GAP}]
    set cell_height [expr {$height + [viewer::glyphs height] + $GAP}]
    set columns [expr {max(1, int(ceil(sqrt(double($count) * $cell_height / $cell_width))))}]
    set columns [expr {min($columns, $MOST / $cell_width)}]
    set rows [expr {($count + $columns - 1) / $columns}]
    if {$rows * $cell_height + $GAP > $MOST} {
        set room [expr {$columns * ($MOST / $cell_height)}]
        viewer::options die "a contact sheet has room for $room models of this shape" 2
    }
    set page_width [expr {$columns * $cell_width + $GAP}]
    set page_height [expr {$rows * $cell_height + $GAP}]
    set photo [image create photo -width $page_width -height $page_height]
    $photo put [colour_name $PAPER] -to 0 0 $page_width $page_height
    return [dict create photo $photo columns $columns cell_width $cell_width cell_height $cell_height \
        width $width height $height]
}

# Puts a picture, or a cross where there is none, and a name into the cell of that number.
proc viewer::sheet::cell {sheet index picture name} {
    variable GAP
    variable INK
    dict with sheet {
        set x [expr {$GAP + $index % $columns * $cell_width}]
        set y [expr {$GAP + $index / $columns * $cell_height}]
        if {$picture ne {}} {
            $photo copy $picture -to $x $y
        } else {
            $photo put [colour_name {70 40 42}] -to $x $y [expr {$x + $width}] [expr {$y + $height}]
            set text "could not be loaded"
            write $photo $text [expr {$x + ($width - [text_width $text]) / 2}] [expr {$y + $height / 2 - 10}] \
                $INK {70 40 42}
        }
        while {[text_width $name] > $width && [string length $name] > 1} { set name [string range $name 0 end-1] }
        write $photo $name [expr {$x + ($width - [text_width $name]) / 2}] [expr {$y + $height + 2}] $INK
    }
}

proc viewer::sheet::colour_name {rgb} {
    return [format #%02x%02x%02x {*}$rgb]
}

# ---- letters -------------------------------------------------------------------------------------------------------

# The code of the letter that stands for a character: one without a picture shows as a question mark.
proc viewer::sheet::glyph_code {char} {
    scan $char %c code
    if {$code < 32 || $code > 126} { set code 63 }
    return $code
}

proc viewer::sheet::text_width {text} {
    variable glyph_width
    load_glyphs
    set width 0
    foreach char [split $text {}] { incr width $glyph_width([glyph_code $char]) }
    return $width
}

proc viewer::sheet::load_glyphs {} {
    variable glyph_width
    variable glyph_map
    if {[info exists glyph_width]} return
    foreach {code width map} [viewer::glyphs table] {
        set glyph_width($code) $width
        set glyph_map($code) [regsub -all {\s} $map {}]
    }
}

# Writes a text with its upper left corner at a place.
proc viewer::sheet::write {photo text x y ink {paper {}}} {
    variable glyph_width
    variable glyph_map
    variable PAPER
    if {$paper eq {}} { set paper $PAPER }
    load_glyphs
    set height [viewer::glyphs height]
    for {set level 0} {$level < 16} {incr level} {
        set mixed [lmap a $paper b $ink { expr {round($a + ($b - $a) * $level / 15.0)} }]
        lappend shade [colour_name $mixed]
    }
    foreach char [split $text {}] {
        set code [glyph_code $char]
        set width $glyph_width($code)
        set rows {}
        for {set row 0} {$row < $height} {incr row} {
            set digits [string range $glyph_map($code) [expr {$row * $width}] [expr {($row + 1) * $width - 1}]]
            lappend rows [lmap digit [split $digits {}] { lindex $shade [scan $digit %x] }]
        }
        $photo put $rows -to $x $y
        incr x $width
    }
}
