# The panel of points: a table, a page at a time, and the values of one point to be edited.
#
# The library lists the ids of a model's points only while the list stays below 8,150 characters. Beyond that the
# pages run over ranges of ids, and the ids that answer are the points.

namespace eval viewer {
    variable PAGE 100
    variable LARGEST_POINT 32767
    variable point_ids {}       ;# all ids, or empty when they could not be listed
    variable page_start 0       ;# index into point_ids, or the first id of the range
    variable point              ;# the values being edited
    array set point {id {} x {} y {} z {} nx {} ny {} nz {} transparency {} color {255 255 255}}
}

proc viewer::build_points_panel {panel} {
    set columns {id x y z}
    ttk::frame $panel.list
    ttk::treeview $panel.table -columns $columns -show headings -selectmode browse -height 5 \
        -yscrollcommand [list $panel.scroll set]
    foreach {column text width} {id Point 46 x X 56 y Y 56 z Z 56} {
        $panel.table heading $column -text $text -anchor e
        $panel.table column $column -width [px $width] -minwidth [px 30] -anchor e
    }
    ttk::scrollbar $panel.scroll -orient vertical -command [list $panel.table yview]
    ttk::frame $panel.pages -style Panel.TFrame
    ttk::button $panel.back -text "\u2039" -width 2 -command {viewer::turn_page -1}
    ttk::button $panel.on -text "\u203a" -width 2 -command {viewer::turn_page 1}
    ttk::label $panel.count -style Dim.TLabel -background $::viewer::COLOUR(panel) -anchor center
    ttk::entry $panel.go -width 6
    bind $panel.go <Return> {viewer::go_to_point [%W get]}
    pack $panel.back -in $panel.pages -side left
    pack $panel.on -in $panel.pages -side right
    pack $panel.go -in $panel.pages -side right -padx [px 4]
    pack $panel.count -in $panel.pages -side left -fill x -expand 1
    grid $panel.list -columnspan 4 -sticky nsew
    grid $panel.table $panel.scroll -in $panel.list -sticky nsew
    grid rowconfigure $panel.list 0 -weight 1
    grid columnconfigure $panel.list 0 -weight 1
    foreach widget [list $panel.table $panel.scroll $panel.back $panel.on $panel.go $panel.count] { raise $widget }
    grid $panel.pages -columnspan 4 -sticky ew -pady [px 4]
    build_point_fields $panel
    grid rowconfigure $panel 0 -weight 1
    foreach column {1 2 3} { grid columnconfigure $panel $column -weight 1 -uniform value }
    bind $panel.table <<TreeviewSelect>> viewer::point_selected
}

proc viewer::build_point_fields {panel} {
    foreach {row text names command} {
        point Place {x y z} viewer::set_point
        normal Normal {nx ny nz} viewer::set_normal
    } {
        ttk::label $panel.l$row -text $text -background $::viewer::COLOUR(panel)
        set fields {}
        foreach name $names {
            ttk::entry $panel.$name -width 5 -textvariable ::viewer::point($name) -justify right
            bind $panel.$name <Return> $command
            bind $panel.$name <FocusOut> $command
            lappend fields $panel.$name
        }
        grid $panel.l$row {*}$fields -sticky ew -pady 1 -padx 1
    }
    ttk::label $panel.lcolour -text "Colour" -background $::viewer::COLOUR(panel)
    frame $panel.colour -height [px 22] -cursor hand2 -highlightthickness 1 \
        -highlightbackground $::viewer::COLOUR(line)
    bind $panel.colour <Button-1> viewer::choose_point_colour
    ttk::label $panel.ltransparency -text "Transparency" -background $::viewer::COLOUR(panel)
    ttk::entry $panel.transparency -width 5 -textvariable ::viewer::point(transparency) -justify right
    bind $panel.transparency <Return> viewer::set_point_transparency
    bind $panel.transparency <FocusOut> viewer::set_point_transparency
    grid $panel.lcolour $panel.colour - - -sticky ew -pady 1 -padx 1
    grid $panel.ltransparency - - $panel.transparency -sticky ew -pady 1 -padx 1
}

# ---- the table -----------------------------------------------------------------------------------------------------

# Looks the points of the current model up anew.
proc viewer::refresh_points {} {
    variable current_id
    variable point_ids
    variable page_start
    set point_ids {}
    if {$current_id != 0} { set point_ids [lsort -integer [numbers [ask get vertex list]]] }
    set page_start [expr {[llength $point_ids] > 0 ? 0 : 1}]
    fill_page
}

proc viewer::fill_page {} {
    variable current_id
    variable point_ids
    variable page_start
    variable PAGE
    set panel .side.points
    $panel.table delete [$panel.table children {}]
    clear_point
    if {$current_id == 0} {
        $panel.count configure -text {}
        return
    }
    if {[llength $point_ids] > 0} {
        set ids [lrange $point_ids $page_start [expr {$page_start + $PAGE - 1}]]
        $panel.count configure -text "[llength $point_ids] points"
    } else {
        set ids {}
        for {set id $page_start} {$id < $page_start + $PAGE} {incr id} { lappend ids $id }
        $panel.count configure -text "$page_start to [expr {$page_start + $PAGE - 1}]"
    }
    foreach id $ids {
        set place [numbers [ask get vertex point $id]]
        if {[llength $place] == 3} {
            $panel.table insert {} end -id $id -values [list $id {*}[lmap part $place { short_number $part }]]
        }
    }
}

# Without the noughts at its end.
proc viewer::short_number {number} {
    set text [format %.3f $number]
    return [string trimright [string trimright $text 0] .]
}

proc viewer::turn_page {by} {
    variable point_ids
    variable page_start
    variable PAGE
    variable LARGEST_POINT
    if {[llength $point_ids] > 0} {
        set last [expr {([llength $point_ids] - 1) / $PAGE * $PAGE}]
        set page_start [expr {max(0, min($last, $page_start + $by * $PAGE))}]
    } else {
        set page_start [expr {max(1, min($LARGEST_POINT - $PAGE + 1, $page_start + $by * $PAGE))}]
    }
    fill_page
}

# Turns to the page of a point and selects it.
proc viewer::go_to_point {id} {
    variable point_ids
    variable page_start
    variable PAGE
    if {![regexp {^\d{1,5}$} $id]} return
    scan $id %d id
    if {[llength $point_ids] > 0} {
        set index [lsearch -integer $point_ids $id]
        if {$index < 0} {
            say_status "There is no point $id"
            return
        }
        set page_start [expr {$index / $PAGE * $PAGE}]
    } else {
        set page_start [expr {max(1, $id)}]
    }
    fill_page
    if {[.side.points.table exists $id]} {
        .side.points.table see $id
        .side.points.table selection set [list $id]
        point_selected
    } else {
        say_status "There is no point $id"
    }
}

# ---- one point -----------------------------------------------------------------------------------------------------

proc viewer::clear_point {} {
    variable point
    array set point {id {} x {} y {} z {} nx {} ny {} nz {} transparency {} color {255 255 255}}
    foreach name {x y z nx ny nz transparency} { .side.points.$name state disabled }
    .side.points.colour configure -background $::viewer::COLOUR(panel)
}

proc viewer::point_selected {} {
    variable point
    set id [lindex [.side.points.table selection] 0]
    if {$id eq {}} {
        clear_point
        return
    }
    set point(id) $id
    foreach {what names} {point {x y z} normal {nx ny nz} transparency transparency} {
        set values [numbers [ask get vertex $what $id]]
        foreach name $names value $values { set point($name) [expr {$value eq {} ? {} : [short_number $value]}] }
    }
    set colour [numbers [ask get vertex color $id]]
    if {[llength $colour] == 3} { set point(color) $colour }
    .side.points.colour configure -background [format #%02x%02x%02x {*}[lmap part $point(color) {
        expr {max(0, min(255, int($part)))}
    }]]
    foreach name {x y z nx ny nz transparency} { .side.points.$name state !disabled }
    array set ::viewer::point_before [array get point]
}

# Whether one of these values was changed and all of them are numbers. What is no number goes back.
proc viewer::point_edited {names} {
    variable point
    variable point_before
    variable NUMBER
    if {$point(id) eq {}} { return 0 }
    set changed 0
    foreach name $names {
        if {![regexp "^$NUMBER\$" $point($name)]} {
            set point($name) $point_before($name)
            continue
        }
        if {$point($name) ne $point_before($name)} { set changed 1 }
    }
    return $changed
}

# Points stand at whole numbers.
proc viewer::set_point {} {
    variable point
    if {![point_edited {x y z}]} return
    sorvel set vertex point $point(id) $point(x) $point(y) $point(z)
    point_sent
}

# The library passes over the fourth word of a normal.
proc viewer::set_normal {} {
    variable point
    if {![point_edited {nx ny nz}]} return
    sorvel set vertex normal $point(id) $point(nx) $point(ny) 0 $point(nz)
    point_sent
}

# Giving a transparency changes the colour too, so the colour is given again.
proc viewer::set_point_transparency {} {
    variable point
    if {![point_edited transparency]} return
    sorvel set vertex transparency $point(id) $point(transparency)
    sorvel set vertex color $point(id) {*}$point(color)
    point_sent
}

proc viewer::choose_point_colour {} {
    variable point
    if {$point(id) eq {}} return
    set chosen [tk_chooseColor -title "Colour of point $point(id)" \
        -initialcolor [.side.points.colour cget -background]]
    if {$chosen eq {}} return
    sorvel set vertex color $point(id) {*}[lmap part [winfo rgb . $chosen] { expr {$part / 257} }]
    point_sent
}

# Shows what the library made of it.
proc viewer::point_sent {} {
    variable point
    redraw_edited
    set id $point(id)
    point_selected
    if {[.side.points.table exists $id]} {
        foreach name {x y z} { .side.points.table set $id $name $point($name) }
    }
}
