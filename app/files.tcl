# Files: their names, the one way in which the viewer reads one, the one way in which it writes one, and a private folder
# for what the library is to write.
#
# Owns: work_folder, work_files
# Offers: root, whole_path, real_path, why_unreadable, read_bytes, text_of_file, write_bytes, temporary_path,
#     remove_private_folder
# Calls: nothing

namespace eval viewer::files {
    namespace export root whole_path real_path why_unreadable read_bytes text_of_file write_bytes temporary_path \
        remove_private_folder
    namespace ensemble create
    variable ROOT [file dirname [file dirname [file normalize [info script]]]]
    variable work_folder {}     ;# made at the first use, gone at the end
    variable work_files 0       ;# names given out in it
}

# ---- names ---------------------------------------------------------------------------------------------------------

# The folder that the program lies in, with its models and its library.
proc viewer::files::root {} {
    variable ROOT
    return $ROOT
}

# The whole name of a file, counted from a folder or from where the program was started. A tilde at its beginning is a
# letter as any other, and a bar, which has a meaning of its own where Tcl opens files, is never the first character.
proc viewer::files::whole_path {path {folder {}}} {
    if {$path eq {}} { return {} }
    if {[string index $path 0] eq "~"} { set path ./$path }
    return [file normalize [file join $folder $path]]
}

# What a name leads to, when it is a link.
proc viewer::files::real_path {path} {
    return [file dirname [file normalize [file join [whole_path $path] .pelt]]]
}

# ---- reading -------------------------------------------------------------------------------------------------------

# Why this is no file that can be read; nothing when it is one.
proc viewer::files::why_unreadable {path} {
    if {[catch { file stat $path status }]} { return "there is no such file" }
    if {$status(type) eq "directory"} { return "that is a folder" }
    if {$status(type) ne "file"} { return "that is no ordinary file" }
    if {![file readable $path]} { return "you have no permission to read it" }
    return {}
}

# The bytes of an ordinary file of at most so many. An error tells why there are none. Every file that the viewer reads
# itself comes through here, so that no name that somebody wrote into a file makes it run a program or wait for one.
proc viewer::files::read_bytes {path most} {
    set path [whole_path $path]
    set why [why_unreadable $path]
    if {$why ne {}} { error $why }
    # Should another kind of file have taken the name meanwhile, opening it waits for nobody.
    set flags [expr {$::tcl_platform(platform) eq "windows" ? "RDONLY" : "RDONLY NONBLOCK"}]
    set channel [open [file normalize $path] $flags]
    try {
        fconfigure $channel -translation binary
        set bytes [read $channel [expr {$most + 1}]]
    } finally {
        close $channel
    }
    if {[string length $bytes] > $most} { error "it is larger than $most bytes" }
    return $bytes
}

proc viewer::files::text_of_file {path most} {
    return [string map {\r\n \n} [encoding convertfrom utf-8 [read_bytes $path $most]]]
}

# ---- writing -------------------------------------------------------------------------------------------------------

# Gives a file these bytes: beside its place first, under its name when they are whole, so that nothing that stood there
# is lost to a full disk. Nothing, or what went wrong.
proc viewer::files::write_bytes {path bytes} {
    set path [real_path $path]
    if {[file exists $path] && ![file isfile $path]} { return "that is no ordinary file" }
    set new [file join [file dirname $path] .pelt-[pid]-[clock clicks]]
    set failed [catch {
        set channel [open [file normalize $new] {WRONLY CREAT EXCL}]
        fconfigure $channel -translation binary
        puts -nonewline $channel $bytes
        close $channel
        if {[file exists $path] && $::tcl_platform(platform) ne "windows"} {
            file attributes $new -permissions [file attributes $path -permissions]
        }
        file rename -force $new $path
    } message]
    if {!$failed} { return {} }
    if {[info exists channel]} {
        catch { close $channel }
        catch { file delete $new }
    }
    return $message
}

# ---- the private folder --------------------------------------------------------------------------------------------

# A name for a file that the library is to write, which cuts its words at blanks. Whoever asked removes the file.
proc viewer::files::temporary_path {ending} {
    variable work_files
    return [file join [private_folder] [incr work_files]$ending]
}

proc viewer::files::private_folder {} {
    variable work_folder
    if {$work_folder ne {} && [is_private $work_folder]} { return $work_folder }
    foreach base [temporary_bases] {
        for {set try 0} {$try < 20} {incr try} {
            set folder [file join $base pelt-[pid]-[expr {int(rand() * 1e9)}]]
            if {[file exists $folder] || [catch { file mkdir $folder }] || ![is_private $folder]} continue
            return [set work_folder $folder]
        }
    }
    error "no folder for temporary files can be written"
}

# Whether this is a folder of ours and no link, and nobody else may write there. In a folder that all share somebody could
# have come first.
proc viewer::files::is_private {folder} {
    if {[catch { file lstat $folder status }] || $status(type) ne "directory"} { return 0 }
    if {$::tcl_platform(platform) eq "windows"} { return 1 }
    return [expr {[file owned $folder] && ![catch { file attributes $folder -permissions 0700 }]}]
}

# Folders for temporary files, the best first: only those that exist, may be written and have no blank in their names.
proc viewer::files::temporary_bases {} {
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

# It is empty by now; one that is not stays where it is.
proc viewer::files::remove_private_folder {} {
    variable work_folder
    if {$work_folder ne {}} { catch { file delete $work_folder } }
    set work_folder {}
}
