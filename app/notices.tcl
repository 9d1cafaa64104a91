# What went wrong, told once: a strip above the view that stays until it is dismissed or made good.
#
# Owns: again
# Offers: build, tell_failure, note, hide, retry
# Calls: library, status, theme

namespace eval viewer::notices {
    namespace export build tell_failure note hide retry
    namespace ensemble create
    namespace import ::viewer::theme::px
    variable again {}     ;# what "Try again" does
    viewer::library listen viewer::notices::note
}

proc viewer::notices::build {} {
    foreach kind {Bad Note} {
        set strip .notice[string tolower $kind]
        ttk::frame $strip -style $kind.TFrame -padding [list [px 12] [px 8]]
        ttk::label $strip.title -style Title$kind.TLabel
        ttk::label $strip.text -style $kind.TLabel -justify left
        ttk::label $strip.place -style Code$kind.TLabel -justify left
        ttk::label $strip.code -style Code$kind.TLabel -justify left
        ttk::frame $strip.buttons -style $kind.TFrame
        ttk::button $strip.again -style $kind.TButton -text "Try again" -command viewer::notices::retry
        ttk::button $strip.close -style $kind.TButton -text "Dismiss" -command viewer::notices::hide
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

# Tells a failure of a load, as the scene has it: what, in which file, on which line, and how that line reads. "Try again"
# runs the command.
proc viewer::notices::tell_failure {failure command} {
    variable again
    set again $command
    set file [dict get $failure file]
    set line [dict get $failure line]
    set where [file nativename $file]
    if {$line > 0} { append where ", line $line" }
    show bad [dict get $failure title] [string toupper [dict get $failure text] 0] $where [dict get $failure source]
    viewer::status say "[file tail [dict get $failure path]] could not be loaded"
}

# A text that the library, or this program, has to tell.
proc viewer::notices::note {text {title "Note"}} {
    variable again
    set again {}
    show note $title $text {} {}
}

proc viewer::notices::show {kind title text where code} {
    variable again
    set strip .notice$kind
    if {![winfo exists $strip]} {
        puts stderr "viewer: [regsub -all {\s+} $text { }]"
        return
    }
    hide 0
    $strip.title configure -text $title
    $strip.text configure -text $text
    $strip.place configure -text $where
    $strip.code configure -text $code
    foreach part {place code} {
        if {[$strip.$part cget -text] eq {}} { grid remove $strip.$part } else { grid $strip.$part }
    }
    if {$again eq {}} { pack forget $strip.again } else {
        pack $strip.again -in $strip.buttons -side right -padx [px 4]
    }
    grid $strip -row 1 -column 0 -sticky ew
}

proc viewer::notices::hide {{forget 1}} {
    variable again
    if {$forget} { set again {} }
    foreach strip {.noticebad .noticenote} {
        if {[winfo exists $strip]} { grid remove $strip }
    }
}

proc viewer::notices::retry {} {
    variable again
    set command $again
    hide
    if {$command ne {}} { {*}$command }
}
