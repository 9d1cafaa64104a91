# What went wrong, told once: a strip above the view that stays until it is dismissed or made good.

namespace eval viewer {
    variable notice_retry {}     ;# what "Try again" does
    variable message {}          ;# the latest word in the status line
}

proc viewer::build_notice {} {
    foreach kind {Bad Note} {
        set strip .notice[string tolower $kind]
        ttk::frame $strip -style $kind.TFrame -padding [list [px 12] [px 8]]
        ttk::label $strip.title -style Title$kind.TLabel
        ttk::label $strip.text -style $kind.TLabel -justify left
        ttk::label $strip.place -style Code$kind.TLabel -justify left
        ttk::label $strip.code -style Code$kind.TLabel -justify left
        ttk::frame $strip.buttons -style $kind.TFrame
        ttk::button $strip.again -style $kind.TButton -text "Try again" -command viewer::retry
        ttk::button $strip.close -style $kind.TButton -text "Dismiss" -command viewer::hide_notice
        pack $strip.close $strip.again -in $strip.buttons -side right -padx [px 4]
        grid $strip.title $strip.buttons -sticky nw
        grid $strip.text - -sticky w
        grid $strip.place - -sticky w
        grid $strip.code - -sticky w
        grid configure $strip.buttons -sticky ne
        grid columnconfigure $strip 0 -weight 1
        grid rowconfigure $strip 0 -minsize [px 20]
        bind $strip <Configure> {
            foreach part {text place code} { %W.$part configure -wraplength [expr {max(200, %w - 40)}] }
        }
    }
}

# Tells the latest failure of a load: what, in which file, on which line, and how that line reads.
proc viewer::tell_failure {retry} {
    variable failure
    variable notice_retry
    set notice_retry $retry
    set file [dict get $failure file]
    set line [dict get $failure line]
    set where [file nativename $file]
    if {$line > 0} { append where ", line $line" }
    show_notice bad [dict get $failure title] [string toupper [dict get $failure text] 0] $where \
        [dict get $failure source]
    say_status "[file tail [dict get $failure path]] could not be loaded"
}

# A text that the library, or this program, has to tell.
proc viewer::tell_notice {text {title "Note"}} {
    variable notice_retry
    set notice_retry {}
    show_notice note $title $text {} {}
}

proc viewer::show_notice {kind title text where code} {
    variable notice_retry
    set strip .notice$kind
    if {![winfo exists $strip]} {
        puts stderr "viewer: [regsub -all {\s+} $text { }]"
        return
    }
    hide_notice 0
    $strip.title configure -text $title
    $strip.text configure -text $text
    $strip.place configure -text $where
    $strip.code configure -text $code
    foreach part {place code} {
        if {[$strip.$part cget -text] eq {}} { grid remove $strip.$part } else { grid $strip.$part }
    }
    if {$notice_retry eq {}} { pack forget $strip.again } else {
        pack $strip.again -in $strip.buttons -side right -padx [px 4]
    }
    grid $strip -row 1 -column 0 -sticky ew
}

proc viewer::hide_notice {{forget 1}} {
    variable notice_retry
    if {$forget} { set notice_retry {} }
    foreach strip {.noticebad .noticenote} {
        if {[winfo exists $strip]} { grid remove $strip }
    }
}

proc viewer::retry {} {
    variable notice_retry
    set script $notice_retry
    hide_notice
    if {$script ne {}} { {*}$script }
}

# A word in the status line.
proc viewer::say_status {text} {
    variable message
    set message $text
}
