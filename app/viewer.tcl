# The viewer: a window on the library, which it drives through the command sorvel alone, or pictures without a window.
#
# Each file beside this one is a room: the namespace of its name below this one, with the variables that it alone touches
# ("Owns") and the words that others may call ("Offers"), as in "viewer::view fit". A room calls those before it in these
# lists and no others ("Calls"); those behind it hear of it through its "listen". So whoever changes a room needs to read
# that room, and the heads of those that it calls.
#
# Owns: nothing
# Offers: nothing
# Calls: options, library, files, batch, session, view

namespace eval viewer {
    variable APP_FOLDER [file dirname [file normalize [info script]]]
    variable COMMON_ROOMS {numbers files options library settings timeline scene view display pictures}
    variable BATCH_ROOMS {report stage glyphs sheet batch}
    variable WINDOW_ROOMS {theme mouse status notices questions selection tree edits layer_panel points_panel place_panel
        panels playback axes watch documents dialogs toolbar window actions keys menus help commands session}
}

proc viewer::source_rooms {names} {
    variable APP_FOLDER
    foreach name $names { uplevel #0 [list source -encoding utf-8 [file join $APP_FOLDER $name.tcl]] }
}

proc viewer::start {words} {
    variable BATCH_ROOMS
    variable WINDOW_ROOMS
    set files [viewer::options read_words $words]
    if {[viewer::options get help]} {
        puts [viewer::options usage]
        exit 0
    }
    viewer::options check $files
    # In tclsh, which leaves the words of the command line alone (wish takes those that look like its own options), Tk
    # comes only now; it is not to see them either.
    set is_wish [expr {[llength [info commands ::winfo]] > 0}]
    set ::argv {}
    if {[catch { package require Tk } message]} { viewer::options die $message 1 }
    viewer::library connect
    set files [viewer::options make_whole $files]
    set sample [file join [viewer::files root] models mill.mod]
    if {[llength $files] == 0 && [viewer::options get animate] eq {} && [file exists $sample]} { lappend files $sample }
    if {[viewer::options is_batch]} {
        source_rooms $BATCH_ROOMS
        viewer::batch run $files
    } else {
        source_rooms $WINDOW_ROOMS
        viewer::session run $files
        if {!$is_wish} { viewer::view wait_for_end }
    }
}

viewer::source_rooms $viewer::COMMON_ROOMS
viewer::start $argv
