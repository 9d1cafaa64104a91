# The side beside the view: the tree of the scene above, the panels of what is selected below. Only the panel in front is
# filled; what was typed into any of them is sent before something else is selected.
#
# Owns: nothing
# Offers: build, show_place
# Calls: layer_panel, place_panel, points_panel, selection, settings, theme, tree

namespace eval viewer::panels {
    namespace export build show_place
    namespace ensemble create
    namespace import ::viewer::theme::px
    viewer::selection listen leaving viewer::panels::commit
    viewer::selection listen chosen viewer::panels::refresh_tab
}

proc viewer::panels::build {} {
    ttk::panedwindow .side.split -orient vertical
    pack .side.split -fill both -expand 1
    ttk::frame .side.scene
    viewer::tree build .side.scene
    ttk::notebook .side.tabs
    foreach {name text} {layer Layer points Points place Place} {
        ttk::frame .side.$name -padding [px 8] -style Panel.TFrame
        .side.tabs add .side.$name -text $text -sticky nsew
    }
    .side.split add .side.scene -weight 1
    .side.split add .side.tabs -weight 1
    foreach widget {.side.tree .side.treebar .side.layer .side.points .side.place} { raise $widget }
    viewer::layer_panel build .side.layer
    viewer::points_panel build .side.points
    viewer::place_panel build .side.place
    bind .side.tabs <<NotebookTabChanged>> viewer::panels::refresh_tab
}

# Sends what stands in the fields and has not been sent yet.
proc viewer::panels::commit {} {
    if {![winfo exists .side.tabs]} return
    viewer::layer_panel commit
    viewer::points_panel commit
    viewer::place_panel commit
}

proc viewer::panels::refresh_tab {} {
    switch [.side.tabs select] {
        .side.layer { viewer::layer_panel refresh }
        .side.points { viewer::points_panel refresh }
        .side.place { viewer::place_panel refresh }
    }
}

proc viewer::panels::show_place {} {
    viewer::settings keep side 1
    .side.tabs select .side.place
}
