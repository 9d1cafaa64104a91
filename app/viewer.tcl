# The viewer: a window on the library, which it drives through the command sorvel alone, or pictures without a window.
# Each file beside this one is about one thing; here they are put together.

namespace eval viewer {
    variable app_folder [file dirname [file normalize [info script]]]
    variable COMMON_FILES {options files library scene view mouse pictures}
    variable BATCH_FILES {batch sheet}
    variable WINDOW_FILES {settings theme commands menus window notices panels layer_panel points_panel place_panel
        axes playback watch documents help dialogs}
}

proc viewer::source_files {names} {
    variable app_folder
    foreach name $names { uplevel #0 [list source -encoding utf-8 [file join $app_folder $name.tcl]] }
}

# The files are named from where the program was started; opening a scene list goes elsewhere.
proc viewer::absolute_names {files} {
    variable option
    foreach name {output animate contact-sheet} {
        if {$option($name) eq {}} continue
        # The mark of a directory would go.
        set mark [expr {[names_a_folder $option($name)] ? "/" : {}}]
        set option($name) [whole_path $option($name)]$mark
    }
    return [lmap file $files { whole_path $file }]
}

proc viewer::start {words} {
    variable root_folder
    variable option
    variable given
    set files [read_command_line $words]
    if {$option(help)} {
        puts [usage]
        exit 0
    }
    # A scene list among the files is one to open as such.
    if {[llength $files] == 1 && [string tolower [file extension [lindex $files 0]]] eq ".scene" && !$given(animate)} {
        lassign $files option(animate)
        set given(animate) 1
        set files {}
    }
    check_options $files
    # In tclsh, which leaves the words of the command line alone (wish takes those that look like its own options), Tk
    # comes only now; it is not to see them either.
    set is_wish [expr {[llength [info commands ::winfo]] > 0}]
    set ::argv {}
    if {[catch { package require Tk } message]} { die $message 1 }
    load_library
    set files [absolute_names $files]
    set sample [file join $root_folder models mill.mod]
    if {[llength $files] == 0 && $option(animate) eq {} && [file exists $sample]} { set files [list $sample] }
    if {[is_batch]} {
        source_files $::viewer::BATCH_FILES
        run_batch $files
    } else {
        source_files $::viewer::WINDOW_FILES
        run_window $files
        if {!$is_wish} { vwait ::viewer::ended }
    }
}

viewer::source_files $viewer::COMMON_FILES
viewer::start $argv
