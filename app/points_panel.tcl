# The panel of points: a table, a page at a time, and the values of one point to be edited.
#
# Owns: point_ids, points_of, page_start, point, point_before
# Offers: build, refresh, commit, go_to_point
# Calls: edits, numbers, selection, status, theme, view

namespace eval viewer::points_panel {
    namespace export build refresh commit go_to_point
    namespace ensemble create
    namespace import ::viewer::theme::px
    variable point_ids {}       ;# of all points of the model
    variable points_of 0        ;# the model or child that they belong to
    variable page_start 0       ;# index into point_ids
    variable point              ;# the values being edited
    variable point_before       ;# the same as they were shown
    variable PAGE 100
    variable POINT_EMPTY {id {} x {} y {} z {} nx {} ny {} nz {} transparency {} color {255 255 255}}
    array set point $POINT_EMPTY
    array set point_before $POINT_EMPTY
}

proc viewer::points_panel::build {panel} {
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
    ttk::button $panel.back -text "\u2039" -width 2 -command {viewer::points_panel::turn_page -1}
    ttk::button $panel.on -text "\u203a" -width 2 -command {viewer::points_panel::turn_page 1}
    ttk::label $panel.count -style Dim.TLabel -background [viewer::theme colour panel] -anchor center
    ttk::entry $panel.go -width 6
    bind $panel.go <Return> {viewer::points_panel::go_to_point [%W get]}
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
    build_fields $panel
    grid rowconfigure $panel 0 -weight 1
    foreach column {1 2 3} { grid columnconfigure $panel $column -weight 1 -uniform value }
    bind $panel.table <<TreeviewSelect>> viewer::points_panel::point_selected
}

proc viewer::points_panel::build_fields {panel} {
    set drop { viewer::points_panel::point_selected; viewer::view take_keyboard; break }
    foreach {row text names} {point Place {x y z} normal Normal {nx ny nz}} {
        ttk::label $panel.l$row -text $text -background [viewer::theme colour panel]
        set fields {}
        foreach name $names {
            ttk::entry $panel.$name -width 5 -textvariable ::viewer::points_panel::point($name) -justify right
            bind $panel.$name <Return> viewer::points_panel::commit
            bind $panel.$name <FocusOut> viewer::points_panel::commit
            bind $panel.$name <Escape> $drop
            lappend fields $panel.$name
        }
        grid $panel.l$row {*}$fields -sticky ew -pady 1 -padx 1
    }
    ttk::label $panel.lcolour -text "Colour" -background [viewer::theme colour panel]
    frame $panel.colour -height [px 22] -cursor hand2 -highlightthickness 1 \
        -highlightbackground [viewer::theme colour line]
    bind $panel.colour <Button-1> viewer::points_panel::choose_colour
    ttk::label $panel.ltransparency -text "Transparency" -background [viewer::theme colour panel]
    ttk::entry $panel.transparency -width 5 -textvariable ::viewer::points_panel::point(transparency) -justify right
    bind $panel.transparency <Return> viewer::points_panel::commit
    bind $panel.transparency <FocusOut> viewer::points_panel::commit
    bind $panel.transparency <Escape> $drop
    grid $panel.lcolour $panel.colour - - -sticky ew -pady 1 -padx 1
    grid $panel.ltransparency - - $panel.transparency -sticky ew -pady 1 -padx 1
}

# ---- the table -----------------------------------------------------------------------------------------------------

# Looks the points of the current model up anew. Page and point stay where it has them still.
proc viewer::points_panel::refresh {} {
    variable point_ids
    variable points_of
    variable page_start
    set id [viewer::selection id]
    set chosen [expr {$points_of eq $id ? [lindex [.side.points.table selection] 0] : {}}]
    set point_ids {}
    if {$id ne "0"} { catch { set point_ids [sorvel scene points $id] } }
    if {$points_of ne $id || $page_start >= [llength $point_ids]} { set page_start 0 }
    set points_of $id
    fill_page
    if {$chosen ne {} && [.side.points.table exists $chosen]} { .side.points.table selection set [list $chosen] }
    point_selected
}

proc viewer::points_panel::fill_page {} {
    variable points_of
    variable point_ids
    variable page_start
    variable PAGE
    set panel .side.points
    commit
    $panel.table delete [$panel.table children {}]
    clear_point
    $panel.count configure -text [expr {$points_of eq "0" ? {} : "[llength $point_ids] points"}]
    foreach id [lrange $point_ids $page_start [expr {$page_start + $PAGE - 1}]] {
        set place [dict get [sorvel scene point $points_of $id] place]
        $panel.table insert {} end -id $id -values [list $id {*}[lmap part $place { viewer::numbers short $part }]]
    }
}

proc viewer::points_panel::turn_page {by} {
    variable point_ids
    variable page_start
    variable PAGE
    set last [expr {max(0, [llength $point_ids] - 1) / $PAGE * $PAGE}]
    set page_start [expr {max(0, min($last, $page_start + $by * $PAGE))}]
    fill_page
}

# Turns to the page of a point and selects it.
proc viewer::points_panel::go_to_point {id} {
    variable point_ids
    variable page_start
    variable PAGE
    if {![regexp {^[0-9]{1,9}$} $id]} return
    scan $id %d id
    set index [lsearch -integer $point_ids $id]
    if {$index < 0} {
        viewer::status say "There is no point $id"
        return
    }
    set page_start [expr {$index / $PAGE * $PAGE}]
    fill_page
    .side.points.table see $id
    .side.points.table selection set [list $id]
    point_selected
}

# ---- one point -----------------------------------------------------------------------------------------------------

proc viewer::points_panel::clear_point {} {
    variable POINT_EMPTY
    show_point $POINT_EMPTY
    foreach name {x y z nx ny nz transparency} { .side.points.$name state disabled }
    .side.points.colour configure -background [viewer::theme colour panel]
}

proc viewer::points_panel::show_point {values} {
    array set ::viewer::points_panel::point_before $values
    array set ::viewer::points_panel::point $values
}

# What was typed for another point goes to that one first.
proc viewer::points_panel::point_selected {} {
    variable points_of
    variable point_before
    set id [lindex [.side.points.table selection] 0]
    if {$point_before(id) ne $id} commit
    if {$id eq {} || [catch { sorvel scene point $points_of $id } told]} {
        clear_point
        return
    }
    set values [list id $id color [dict get $told colour]]
    lappend values transparency [viewer::numbers short [dict get $told transparency]]
    foreach {key names} {place {x y z} normal {nx ny nz}} {
        foreach name $names value [dict get $told $key] { lappend values $name [viewer::numbers short $value] }
    }
    show_point $values
    .side.points.colour configure -background [format #%02x%02x%02x {*}[dict get $told colour]]
    set state [expr {[viewer::selection can_edit] ? "!disabled" : "disabled"}]
    foreach name {x y z nx ny nz transparency} { .side.points.$name state $state }
}

# Sends what was changed in the fields to the point that they show. What is no number goes back.
proc viewer::points_panel::commit {} {
    variable point
    variable point_before
    variable points_of
    if {$point(id) eq {} || $points_of ne [viewer::selection id]} return
    foreach name {x y z nx ny nz transparency} {
        if {![viewer::numbers is_one $point($name)]} { set point($name) $point_before($name) }
    }
    array set typed [array get point]
    array set shown [array get point_before]
    # Before anything is sent: each call may serve the event that comes here again.
    array set point_before [array get point]
    if {[array get typed] eq [array get shown]} return
    viewer::selection alone viewer::points_panel::send_point [array get typed] [array get shown]
    point_sent $typed(id)
}

# Points stand at whole numbers; the library passes over the fourth word of a normal. Giving a transparency changes the
# colour too, so the colour is given again.
proc viewer::points_panel::send_point {typed_values shown_values} {
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

proc viewer::points_panel::choose_colour {} {
    variable point
    variable points_of
    if {$point(id) eq {} || ![viewer::selection can_edit]} return
    set target [list $points_of $point(id)]
    set chosen [tk_chooseColor -title "Colour of point $point(id)" \
        -initialcolor [.side.points.colour cget -background]]
    # Another may be selected by now.
    if {$chosen eq {} || [list $points_of $point(id)] ne $target} return
    viewer::selection edit set vertex color $point(id) {*}[lmap part [winfo rgb . $chosen] { expr {$part / 257} }]
    point_sent $point(id)
}

# Shows what the library made of it.
proc viewer::points_panel::point_sent {id} {
    variable point
    variable points_of
    viewer::edits redraw
    if {[.side.points.table exists $id] && ![catch { sorvel scene point $points_of $id } told]} {
        foreach name {x y z} value [dict get $told place] {
            .side.points.table set $id $name [viewer::numbers short $value]
        }
    }
    if {$point(id) eq $id} point_selected
}
