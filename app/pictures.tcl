# Pictures of the view. The library writes TGA files only; a PNG is made of one by way of a Tk photo.

# Draws, and saves what the view shows. Nothing, or why it could not be done. The picture is cut to the size if one is
# given: the library makes its pictures in steps of four pixels.
proc viewer::save_picture {path {width {}} {height {}}} {
    draw_now
    set written [capture]
    if {$written eq {}} { return "the picture could not be written to [links_folder]" }
    set message [store_picture $written $path $width $height]
    file delete $written
    return $message
}

# The picture that the library saves, under a name of our own; an empty name when it could not.
proc viewer::capture {} {
    set path [plain_temporary .tga]
    file delete $path
    sorvel file savescreen $path
    return [expr {[file exists $path] && [file size $path] > 18 ? $path : {}}]
}

# Brings a captured picture to where it belongs. Nothing, or what went wrong.
proc viewer::store_picture {captured path width height} {
    set is_tga [expr {[string tolower [file extension $path]] eq ".tga"}]
    lassign [tga_size $captured] real_width real_height
    if {$width eq {}} { set width $real_width }
    if {$height eq {}} { set height $real_height }
    if {$is_tga && $width == $real_width && $height == $real_height} {
        if {[catch { file copy -force $captured $path } message]} { return $message }
        return {}
    }
    set photo [photo_of_tga $captured $width $height]
    set message [write_photo $photo $path]
    image delete $photo
    return $message
}

# Nothing, or what went wrong. The kind follows from the ending.
proc viewer::write_photo {photo path} {
    set failed [catch {
        if {[string tolower [file extension $path]] eq ".tga"} {
            set channel [open [file normalize $path] wb]
            puts -nonewline $channel [tga_of_photo $photo]
            close $channel
        } else {
            $photo write $path -format png
        }
    } message]
    return [expr {$failed ? $message : {}}]
}

# ---- TGA -----------------------------------------------------------------------------------------------------------

proc viewer::tga_size {path} {
    set channel [open [file normalize $path] rb]
    binary scan [read $channel 18] @12susu width height
    close $channel
    return [list $width $height]
}

# A photo of a picture that the library saved, cut to a size. Its bytes run from the lower left as blue, green, red; all
# of them turned round run from the upper right as red, green, blue, so that only the columns have to change sides.
proc viewer::photo_of_tga {path width height} {
    set channel [open [file normalize $path] rb]
    set bytes [read $channel]
    close $channel
    binary scan $bytes cu id_length
    lassign [tga_size $path] real_width real_height
    set pixels [string range $bytes [expr {18 + $id_length}] end]
    set header "P6\n$real_width $real_height\n255\n"
    set turned [image create photo -format ppm -data $header[string reverse $pixels]]
    set width [expr {min($width, $real_width)}]
    set height [expr {min($height, $real_height)}]
    set photo [image create photo -width $width -height $height]
    # The columns are still the wrong way round here: what is cut off is the same number on either side.
    set left [expr {($real_width - $width) / 2}]
    set top [expr {($real_height - $height) / 2}]
    $photo copy $turned -from $left $top [expr {$left + $width}] [expr {$top + $height}] -subsample -1 1
    image delete $turned
    return $photo
}

proc viewer::tga_of_photo {photo} {
    set width [image width $photo]
    set height [image height $photo]
    set turned [image create photo]
    $turned copy $photo -subsample -1 1
    set bytes [$turned data -format ppm]
    image delete $turned
    set pixels [string range $bytes end-[expr {$width * $height * 3 - 1}] end]
    return [binary format ccccccccccccsscc 0 0 2 0 0 0 0 0 0 0 0 0 $width $height 24 0][string reverse $pixels]
}
