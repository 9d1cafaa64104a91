# The program with a window, from its start to its end.
#
# Owns: nothing
# Offers: run
# Calls: display, documents, files, keys, menus, mouse, notices, options, playback, scene, settings, timeline, view,
#     watch, window

namespace eval viewer::session {
    namespace export run
    namespace ensemble create
}

proc viewer::session::run {files} {
    viewer::settings read_file
    viewer::window build
    bind .view <Destroy> viewer::session::leave
    # The library wants the view on the screen.
    update
    viewer::menus build
    viewer::keys bind_all
    viewer::keys bind_fields
    viewer::mouse connect
    viewer::view create [background]
    viewer::mouse create_cursors
    viewer::display apply_options
    viewer::display apply_kept
    viewer::display read_back
    viewer::timeline set_rate [viewer::settings get rate]
    if {[viewer::options get animate] ne {}} {
        viewer::documents open_file open [viewer::options get animate]
    } else {
        viewer::documents open_files $files
    }
    if {[viewer::scene list_file] ne {}} { viewer::playback start }
    viewer::watch start
    set problem [viewer::settings problem]
    if {$problem ne {}} { viewer::notices note $problem "The settings were damaged" }
}

# The colour behind the scene: of the command line, or as it was kept.
proc viewer::session::background {} {
    if {[viewer::options given background]} { return [split [viewer::options get background] ,] }
    return [viewer::settings get background]
}

proc viewer::session::leave {} {
    viewer::settings write_file
    viewer::files remove_private_folder
    viewer::view end
}
