# The panel of points: a table, a page at a time, and the values of one point to be edited.

namespace eval viewer {
    variable PAGE 100
    variable point_ids {}       ;# of all points of the model
    variable points_of 0        ;# the model or child that they belong to
    variable page_start 0       ;# index into point_ids
    variable point              ;# the values being edited
    variable point_before       ;# the same as they were shown
    variable POINT_EMPTY {id {} x {} y {} z {} nx {} ny {} nz {} transparency {} color {255 255 255}}
    array set point $POINT_EMPTY
    array set point_before $POINT_EMPTY
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
        point Place {x y z} viewer::commit_point
        normal Normal {nx ny nz} viewer::commit_point
    } {
        ttk::label $panel.l$row -text $text -background $::viewer::COLOUR(panel)
        set fields {}
        foreach name $names {
            ttk::entry $panel.$name -width 5 -textvariable ::viewer::point($name) -justify right
            bind $panel.$name <Return> $command
            bind $panel.$name <FocusOut> $command
            bind $panel.$name <Escape> { viewer::drop_typed viewer::point_selected; break }
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
    bind $panel.transparency <Return> viewer::commit_point
    bind $panel.transparency <FocusOut> viewer::commit_point
    bind $panel.transparency <Escape> { viewer::drop_typed viewer::point_selected; break }
    grid $panel.lcolour $panel.colour - - -sticky ew -pady 1 -padx 1
    grid $panel.ltransparency - - $panel.transparency -sticky ew -pady 1 -padx 1
}

# ---- the table -----------------------------------------------------------------------------------------------------

# Looks the points of the current model up anew. Page and point stay where it has them still.
proc viewer::refresh_points {} {
    variable current_id
    variable point_ids
    variable points_of
    variable page_start
    set chosen [expr {$points_of eq $current_id ? [lindex [.side.points.table selection] 0] : {}}]
    set point_ids {}
    if {$current_id ne "0"} { catch { set point_ids [sorvel scene points $current_id] } }
    if {$points_of ne $current_id || $page_start >= [llength $point_ids]} { set page_start 0 }
    set points_of $current_id
    fill_page
    if {$chosen ne {} && [.side.points.table exists $chosen]} { .side.points.table selection set [list $chosen] }
    point_selected
}

proc viewer::fill_page {} {
    variable points_of
    variable point_ids
    variable page_start
    variable PAGE
    set panel .side.points
    commit_point
    $panel.table delete [$panel.table children {}]
    clear_point
    $panel.count configure -text [expr {$points_of eq "0" ? {} : "[llength $point_ids] points"}]
    foreach id [lrange $point_ids $page_start [expr {$page_start + $PAGE - 1}]] {
        set place [dict get [sorvel scene point $points_of $id] place]
        $panel.table insert {} end -id $id -values [list $id {*}[lmap part $place { short_number $part }]]
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
    set last [expr {max(0, [llength $point_ids] - 1) / $PAGE * $PAGE}]
    set page_start [expr {max(0, min($last, $page_start + $by * $PAGE))}]
    fill_page
}

# Turns to the page of a point and selects it.
proc viewer::go_to_point {id} {
    variable point_ids
    variable page_start
    variable PAGE
    if {![regexp {^[0-9]{1,9}$} $id]} return
    scan $id %d id
    set index [lsearch -integer $point_ids $id]
    if {$index < 0} {
        say_status "There is no point $id"
        return
    }
    set page_start [expr {$index / $PAGE * $PAGE}]
    fill_page
    .side.points.table see $id
    .side.points.table selection set [list $id]
    point_selected
}

# ---- one point -----------------------------------------------------------------------------------------------------

proc viewer::clear_point {} {
    variable POINT_EMPTY
    show_point $POINT_EMPTY
    foreach name {x y z nx ny nz transparency} { .side.points.$name state disabled }
    .side.points.colour configure -background $::viewer::COLOUR(panel)
}

proc viewer::show_point {values} {
    array set ::viewer::point_before $values
    array set ::viewer::point $values
}

# What was typed for another point goes to that one first.
proc viewer::point_selected {} {
    variable points_of
    variable can_edit
    variable point_before
    set id [lindex [.side.points.table selection] 0]
    if {$point_before(id) ne $id} commit_point
    if {$id eq {} || [catch { sorvel scene point $points_of $id } told]} {
        clear_point
        return
    }
    set values [list id $id color [dict get $told colour] transparency [short_number [dict get $told transparency]]]
    foreach {key names} {place {x y z} normal {nx ny nz}} {
        foreach name $names value [dict get $told $key] { lappend values $name [short_number $value] }
    }
    show_point $values
    .side.points.colour configure -background [format #%02x%02x%02x {*}[dict get $told colour]]
    foreach name {x y z nx ny nz transparency} { .side.points.$name state [expr {$can_edit ? "!disabled" : "disabled"}] }
}

# Sends what was changed in the fields to the point that they show. What is no number goes back.
proc viewer::commit_point {} {
    variable point
    variable point_before
    variable points_of
    variable current_id
    variable NUMBER
    if {$point(id) eq {} || $points_of ne $current_id} return
    foreach name {x y z nx ny nz transparency} {
        if {![regexp "^$NUMBER\$" $point($name)]} { set point($name) $point_before($name) }
    }
    array set typed [array get point]
    array set shown [array get point_before]
    # Before anything is sent: each call may serve the event that comes here again.
    array set point_before [array get point]
    if {[array get typed] eq [array get shown]} return
    edit_alone viewer::send_point [array get typed] [array get shown]
    point_sent $typed(id)
}

# Points stand at whole numbers; the library passes over the fourth word of a normal. Giving a transparency changes the
# colour too, so the colour is given again.
proc viewer::send_point {typed_values shown_values} {
    array set typed $typed_values
    array set shown $shown_values
    set id $typed(id)
    if {"$typed(x) $typed(y) $typed(z)" ne "$shown(x) $shown(y) $shown(z)"} {
        sorvel set vertex point $id $typed(x) $typed(y) $typed(z)
    }
    if {"$typed(nx) $typed(ny) $typed(nz)" ne "$shown(nx) $shown(ny) $shown(nz)"} {
        sorvel set vertex normal $id $typed(nx) $typed(ny) 0 $typed(nz)
    }
    if {$typed(transparency) ne $shown(transparency)} {
        sorvel set vertex transparency $id $typed(transparency)
        sorvel set vertex color $id {*}$typed(color)
    }
}

proc viewer::choose_point_colour {} {
    variable point
    variable points_of
    variable can_edit
    if {$point(id) eq {} || !$can_edit} return
    set target [list $points_of $point(id)]
    set chosen [tk_chooseColor -title "Colour of point $point(id)" \
        -initialcolor [.side.points.colour cget -background]]
    # Another may be selected by now.
    if {$chosen eq {} || [list $points_of $point(id)] ne $target} return
    edit set vertex color $point(id) {*}[lmap part [winfo rgb . $chosen] { expr {$part / 257} }]
    point_sent $point(id)
}

# Shows what the library made of it.
proc viewer::point_sent {id} {
    variable point
    variable points_of
    redraw_edited
    if {[.side.points.table exists $id] && ![catch { sorvel scene point $points_of $id } told]} {
        foreach name {x y z} value [dict get $told place] { .side.points.table set $id $name [short_number $value] }
    }
    if {$point(id) eq $id} point_selected
}
