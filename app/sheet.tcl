# The contact sheet: small pictures of all models on one page, each with its name below.

namespace eval viewer {
    variable SHEET_CELL 240     ;# width of a picture on the page, in pixels; its height follows --size
    variable SHEET_GAP 16
    variable SHEET_MOST 8000    ;# pixels of the page each way
    variable SHEET_PAPER {30 33 38}
    variable SHEET_INK {216 220 226}
    variable glyph_width           ;# in pixels, by the code of the letter
    variable glyph_map             ;# the shades of its pixels, likewise
}

proc viewer::batch_sheet {files} {
    variable option
    variable batch_failures
    variable batch_done
    variable SHEET_CELL
    source_files glyphs
    set width $SHEET_CELL
    set height [expr {max(20, $SHEET_CELL * $option(height) / $option(width))}]
    set sheet [sheet_page [llength $files] $width $height]
    batch_size $width $height
    set index -1
    foreach file $files {
        incr index
        set photo {}
        if {[load_scene open $file] eq {}} {
            # A model that failed for its own picture was told then.
            if {![names_a_folder $option(output)]} batch_failed
        } else {
            start_view
            draw_now
            if {![catch { capture } captured]} { set photo [photo_of_tga $captured $width $height] }
        }
        sheet_cell $sheet $index $photo [file rootname [file tail $file]]
        if {$photo ne {}} { image delete $photo }
        incr batch_done
        progress $file
    }
    set message [write_photo [dict get $sheet photo] $option(contact-sheet)]
    progress_end
    if {$message ne {}} {
        incr batch_failures
        puts stderr "viewer: [file nativename $option(contact-sheet)]: $message"
        return
    }
    puts [file nativename [file normalize $option(contact-sheet)]]
}

# An empty page with room for so many pictures: about as wide as it is high, and never beyond the largest.
proc viewer::sheet_page {count width height} {
    variable SHEET_GAP
    variable SHEET_MOST
    variable SHEET_PAPER
    variable GLYPH_HEIGHT
    set cell_width [expr {$width + $SHEET_GAP}]
    set cell_height [expr {$height + $GLYPH_HEIGHT + $SHEET_GAP}]
    set columns [expr {max(1, int(ceil(sqrt(double($count) * $cell_height / $cell_width))))}]
    set columns [expr {min($columns, $SHEET_MOST / $cell_width)}]
    set rows [expr {($count + $columns - 1) / $columns}]
    if {$rows * $cell_height + $SHEET_GAP > $SHEET_MOST} {
        die "a contact sheet has room for [expr {$columns * ($SHEET_MOST / $cell_height)}] models of this shape" 2
    }
    set page_width [expr {$columns * $cell_width + $SHEET_GAP}]
    set page_height [expr {$rows * $cell_height + $SHEET_GAP}]
    set photo [image create photo -width $page_width -height $page_height]
    $photo put [colour_name $SHEET_PAPER] -to 0 0 $page_width $page_height
    return [dict create photo $photo columns $columns cell_width $cell_width cell_height $cell_height \
        width $width height $height]
}

# Puts a picture, or a cross where there is none, and a name into the cell of that number.
proc viewer::sheet_cell {sheet index picture name} {
    variable SHEET_GAP
    variable SHEET_INK
    dict with sheet {
        set x [expr {$SHEET_GAP + $index % $columns * $cell_width}]
        set y [expr {$SHEET_GAP + $index / $columns * $cell_height}]
        if {$picture ne {}} {
            $photo copy $picture -to $x $y
        } else {
            $photo put [colour_name {70 40 42}] -to $x $y [expr {$x + $width}] [expr {$y + $height}]
            set text "could not be loaded"
            sheet_text $photo $text [expr {$x + ($width - [text_width $text]) / 2}] [expr {$y + $height / 2 - 10}] \
                $SHEET_INK {70 40 42}
        }
        while {[text_width $name] > $width && [string length $name] > 1} { set name [string range $name 0 end-1] }
        sheet_text $photo $name [expr {$x + ($width - [text_width $name]) / 2}] [expr {$y + $height + 2}] $SHEET_INK
    }
}

proc viewer::colour_name {rgb} {
    return [format #%02x%02x%02x {*}$rgb]
}

# ---- letters -------------------------------------------------------------------------------------------------------

# The code of the letter that stands for a character: one without a picture shows as a question mark.
proc viewer::glyph_code {char} {
    variable GLYPHS
    scan $char %c code
    if {$code < 32 || $code > 126} { set code 63 }
    return $code
}

proc viewer::text_width {text} {
    variable glyph_width
    load_glyphs
    set width 0
    foreach char [split $text {}] { incr width $glyph_width([glyph_code $char]) }
    return $width
}

proc viewer::load_glyphs {} {
    variable GLYPHS
    variable glyph_width
    variable glyph_map
    if {[info exists glyph_width]} return
    foreach {code width map} $GLYPHS {
        set glyph_width($code) $width
        set glyph_map($code) [regsub -all {\s} $map {}]
    }
}

# Writes a text with its upper left corner at a place.
proc viewer::sheet_text {photo text x y ink {paper {}}} {
    variable glyph_width
    variable glyph_map
    variable GLYPH_HEIGHT
    variable SHEET_PAPER
    if {$paper eq {}} { set paper $SHEET_PAPER }
    load_glyphs
    for {set level 0} {$level < 16} {incr level} {
        set mixed [lmap a $paper b $ink { expr {round($a + ($b - $a) * $level / 15.0)} }]
        lappend shade [colour_name $mixed]
    }
    foreach char [split $text {}] {
        set code [glyph_code $char]
        set width $glyph_width($code)
        set rows {}
        for {set row 0} {$row < $GLYPH_HEIGHT} {incr row} {
            set digits [string range $glyph_map($code) [expr {$row * $width}] [expr {($row + 1) * $width - 1}]]
            lappend rows [lmap digit [split $digits {}] { lindex $shade [scan $digit %x] }]
        }
        $photo put $rows -to $x $y
        incr x $width
    }
}
