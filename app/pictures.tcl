# Pictures of the view. The library writes TGA files only; a PNG is made of one by way of a Tk photo.
#
# Owns: nothing
# Offers: save, capture, store, write_photo, photo_of_tga
# Calls: files, view

namespace eval viewer::pictures {
    namespace export save capture store write_photo photo_of_tga
    namespace ensemble create
    variable MOST_PICTURE 67108864    ;# bytes
}

# Draws, and saves what the view shows. Nothing, or why it could not be done. The picture is cut to the size if one is
# given: the library makes its pictures in steps of four pixels.
proc viewer::pictures::save {path {width {}} {height {}}} {
    viewer::view draw_now
    if {[catch { capture } bytes]} { return $bytes }
    return [store $bytes $path $width $height]
}

# The bytes of the picture that the library saves. An error when it could not.
proc viewer::pictures::capture {} {
    variable MOST_PICTURE
    set path [viewer::files temporary_path .tga]
    try {
        sorvel file savescreen $path
        return [viewer::files read_bytes $path $MOST_PICTURE]
    } on error {} {
        error "the picture could not be written to [file dirname $path]"
    } finally {
        file delete $path
    }
}

# Puts a captured picture where it belongs. Nothing, or what went wrong.
proc viewer::pictures::store {bytes path width height} {
    set is_tga [expr {[string tolower [file extension $path]] eq ".tga"}]
    lassign [tga_size $bytes] real_width real_height
    if {$width eq {}} { set width $real_width }
    if {$height eq {}} { set height $real_height }
    if {$is_tga && $width == $real_width && $height == $real_height} { return [viewer::files write_bytes $path $bytes] }
    set photo [photo_of_tga $bytes $width $height]
    set message [write_photo $photo $path]
    image delete $photo
    return $message
}

# Nothing, or what went wrong. The kind follows from the ending.
proc viewer::pictures::write_photo {photo path} {
    if {[string tolower [file extension $path]] eq ".tga"} {
        return [viewer::files write_bytes $path [tga_of_photo $photo]]
    }
    return [viewer::files write_bytes $path [$photo data -format png]]
}

# ---- TGA -----------------------------------------------------------------------------------------------------------

proc viewer::pictures::tga_size {bytes} {
    binary scan $bytes @12susu width height
    return [list $width $height]
}

# A photo of a picture that the library saved, cut to a size. Its bytes run from the lower left as blue, green, red; all
# of them turned round run from the upper right as red, green, blue, so that only the columns have to change sides.
proc viewer::pictures::photo_of_tga {bytes width height} {
    binary scan $bytes cu id_length
    lassign [tga_size $bytes] real_width real_height
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

proc viewer::pictures::tga_of_photo {photo} {
    set width [image width $photo]
    set height [image height $photo]
    set turned [image create photo]
    $turned copy $photo -subsample -1 1
    set bytes [$turned data -format ppm]
    image delete $turned
    set pixels [string range $bytes end-[expr {$width * $height * 3 - 1}] end]
    return [binary format ccccccccccccsscc 0 0 2 0 0 0 0 0 0 0 0 0 $width $height 24 0][string reverse $pixels]
}
