# File names that the library can be told. It cuts its words at blanks, so a name with one is reached by a detour: a
# folder of links without blanks in their names. The model's neighbours must be reachable there too, because images
# and child models are looked for beside it. The folders go when the program ends; what a crash left behind goes at
# the next start.

namespace eval viewer {
    variable link_of          ;# plain folder of each folder, or of each file whose own name has a blank
    variable real_of {}       ;# pairs of a plain path and the real one, for texts of the library
    variable link_root {}
    variable LONGEST_PATH 200 ;# bytes; the library keeps 255 of a path
    array set link_of {}
}

# The whole name of a file, counted from a folder or from where the program was started. A tilde at its beginning is a
# letter as any other, and a bar, which has a meaning of its own where Tcl opens files, is never the first character.
proc viewer::whole_path {path {folder {}}} {
    if {$path eq {}} { return {} }
    if {[string index $path 0] eq "~"} { set path ./$path }
    return [file normalize [file join $folder $path]]
}

# The name of a file as the library may be told it.
proc viewer::plain_path {path} {
    variable real_of
    set path [whole_path $path]
    if {[string match //* $path]} { share_in_texts [file dirname $path] }
    if {![is_awkward $path]} { return $path }
    if {$::tcl_platform(platform) eq "windows" && [file exists $path]} {
        set short [file attributes $path -shortname]
        if {![is_awkward $short]} {
            lappend real_of $short $path
            return $short
        }
    }
    if {[regexp { } [file tail $path]]} { return [plain_file $path] }
    return [file join [plain_folder [file dirname $path]] [file tail $path]]
}

proc viewer::is_awkward {path} {
    variable LONGEST_PATH
    return [expr {[string first { } $path] >= 0 || [string bytelength [library_name $path]] > $LONGEST_PATH}]
}

# On Windows only a backslash separates for the library, and its texts have backslashes resolved: of a pair, which the
# system takes as one, one is left there. The two at the beginning of a share are no separator.
proc viewer::library_name {path} {
    if {$::tcl_platform(platform) ne "windows"} { return $path }
    set share [expr {[string match //* $path] ? {\\} : {}}]
    return $share[string map {/ {\\}} [string range $path [expr {$share eq {} ? 0 : 2}] end]]
}

# Texts of the library have one separator at the beginning of such a name.
proc viewer::share_in_texts {folder} {
    variable real_of
    dict set real_of [string range $folder 1 end]/ $folder/
}

# A name for a file that the library is to write. The caller moves it to where it belongs.
proc viewer::plain_temporary {ending} {
    return [file join [links_folder] written-[clock clicks]$ending]
}

# One link to the folder serves all files in it.
proc viewer::plain_folder {folder} {
    variable link_of
    variable real_of
    if {![info exists link_of($folder)]} {
        set link_of($folder) [file join [links_folder] [array size link_of]]
        lappend real_of $link_of($folder)/ $folder/
    }
    make_link $link_of($folder) $folder
    return $link_of($folder)
}

# A file whose own name has a blank: a folder with a link for each of its neighbours, and one more for itself.
proc viewer::plain_file {path} {
    variable link_of
    variable real_of
    set plain_tail [string map {{ } _} [file tail $path]]
    if {![info exists link_of($path)]} {
        set link_of($path) [file join [links_folder] [array size link_of]]
        file mkdir $link_of($path)
        lappend real_of [file join $link_of($path) $plain_tail] $path $link_of($path)/ [file dirname $path]/
    }
    make_link [file join $link_of($path) $plain_tail] $path
    # Again at each load: a neighbour may be new.
    foreach neighbour [glob -nocomplain -directory [file dirname $path] *] {
        set link [file join $link_of($path) [file tail $neighbour]]
        make_link $link $neighbour
    }
    return [file join $link_of($path) $plain_tail]
}

# A copy stands in where the system makes no links. What is not there gets no link yet: it may come before the next
# load.
proc viewer::make_link {link target} {
    if {![file exists $target]} return
    if {[file exists $link]} {
        # A copy has the time of what it was made of.
        if {[file type $link] ne "file" || [file mtime $link] == [file mtime $target]} return
    } elseif {![catch { file link -symbolic $link $target }]} {
        return
    }
    catch { file copy -force $target $link }
}

# A text of the library with the real names in the place of the plain ones.
proc viewer::with_real_names {text} {
    variable real_of
    if {$::tcl_platform(platform) ne "windows"} { return [string map $real_of $text] }
    # The library keeps directories in lower case there.
    return [string map -nocase $real_of [string map {\\ /} $text]]
}

# ---- the folder of the links ---------------------------------------------------------------------------------------

# Made at the first call, in a place whose name has no blank.
proc viewer::links_folder {} {
    variable link_root
    if {$link_root ne {} && [file isdirectory $link_root]} { return $link_root }
    foreach base [temporary_bases] {
        for {set try 0} {$try < 20} {incr try} {
            set folder [file join $base pelt-[pid]-[expr {int(rand() * 1e9)}]]
            if {[file exists $folder] || [catch { file mkdir $folder }]} continue
            catch { file attributes $folder -permissions 0700 }
            return [set link_root $folder]
        }
    }
    error "no folder for temporary files can be written"
}

# Folders for temporary files, the best first: only those that exist, may be written and have no blank in their names.
proc viewer::temporary_bases {} {
    set bases {}
    foreach name {XDG_RUNTIME_DIR TMPDIR TEMP TMP} {
        if {[info exists ::env($name)]} { lappend bases $::env($name) }
    }
    lappend bases [expr {$::tcl_platform(platform) eq "windows" ? "C:/Windows/Temp" : "/tmp"}]
    set good {}
    foreach base $bases {
        if {$base eq {}} continue
        set base [file normalize $base]
        if {$::tcl_platform(platform) eq "windows" && [file isdirectory $base]} {
            catch { set base [file attributes $base -shortname] }
        }
        if {[file isdirectory $base] && [file writable $base] && [string first { } $base] < 0} { lappend good $base }
    }
    return $good
}

# Deletes the links and nothing that they lead to.
proc viewer::remove_links {} {
    variable link_root
    variable link_of
    variable real_of
    if {$link_root ne {}} { remove_link_folder $link_root }
    array unset link_of
    set real_of {}
    set link_root {}
}

proc viewer::remove_link_folder {root} {
    foreach entry [glob -nocomplain -directory $root *] {
        catch { file type $entry } type
        if {$type eq "directory"} {
            foreach inner [glob -nocomplain -directory $entry *] { catch { file delete -force $inner } }
        }
        catch { file delete -force $entry }
    }
    catch { file delete $root }
}

# Folders of runs that are gone. Only on a system that shows its processes as files.
proc viewer::remove_stale_links {} {
    if {![file isdirectory /proc/self]} return
    foreach base [temporary_bases] {
        foreach folder [glob -nocomplain -type d -directory $base pelt-*-*] {
            if {[regexp {/pelt-(\d+)-\d+$} $folder -> process] && ![file isdirectory /proc/$process]
                && [file owned $folder]} {
                remove_link_folder $folder
            }
        }
    }
}
