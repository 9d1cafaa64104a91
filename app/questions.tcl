# Questions: a window with a few fields, or with a yes and a no. Whoever asks waits for the answer.
#
# Owns: asked
# Offers: ask_values, ask_yes, centre_over
# Calls: theme, view

namespace eval viewer::questions {
    namespace export ask_values ask_yes centre_over
    namespace ensemble create
    namespace import ::viewer::theme::px
    variable asked {}    ;# ok or cancel, once the question was answered
}

# Asks for some values: pairs of a label and a value to begin with. A list of the answers, or nothing when it was
# closed.
proc viewer::questions::ask_values {title hint fields} {
    set entries [build $title $hint $fields OK]
    set first [lindex $entries 0]
    focus $first
    $first selection range 0 end
    set values {}
    if {[wait_for_answer]} { set values [lmap entry $entries { string trim [$entry get] }] }
    if {[viewer::view lives]} { destroy .ask }
    return $values
}

# A question whose yes has a name of its own. The other answer lies nearer: the keyboard is on it.
proc viewer::questions::ask_yes {title text yes} {
    build $title $text {} $yes
    focus .ask.cancel
    set answer [wait_for_answer]
    if {[viewer::view lives]} { destroy .ask }
    return $answer
}

# The window of a question; its fields.
proc viewer::questions::build {title hint fields yes} {
    destroy .ask
    toplevel .ask -padx [px 14] -pady [px 12] -highlightthickness 1 -highlightbackground [viewer::theme colour line]
    wm title .ask $title
    wm transient .ask .
    wm resizable .ask 0 0
    ttk::label .ask.hint -text $hint -style Dim.TLabel -justify left -wraplength [px 320]
    grid .ask.hint - -sticky w -pady [list 0 [px 8]]
    set number 0
    set entries {}
    foreach {label value} $fields {
        ttk::label .ask.l$number -text $label
        ttk::entry .ask.e$number -width 24
        .ask.e$number insert 0 $value
        grid .ask.l$number .ask.e$number -sticky ew -pady [px 2]
        grid configure .ask.l$number -padx [list 0 [px 10]]
        lappend entries .ask.e$number
        incr number
    }
    ttk::frame .ask.buttons
    ttk::button .ask.ok -text $yes -command { set ::viewer::questions::asked ok }
    ttk::button .ask.cancel -text Cancel -command { set ::viewer::questions::asked cancel }
    pack .ask.cancel .ask.ok -in .ask.buttons -side right -padx [px 3]
    grid .ask.buttons - -sticky e -pady [list [px 10] 0]
    foreach button {ok cancel} { bind .ask.$button <Return> { %W invoke; break } }
    bind .ask <Return> { set ::viewer::questions::asked ok }
    bind .ask <Escape> { set ::viewer::questions::asked cancel }
    wm protocol .ask WM_DELETE_WINDOW { set ::viewer::questions::asked cancel }
    # The program ends with this window open too: nobody else would end the wait.
    bind .ask <Destroy> { set ::viewer::questions::asked cancel }
    centre_over .ask
    return $entries
}

# 1 for yes.
proc viewer::questions::wait_for_answer {} {
    variable asked
    set asked {}
    vwait ::viewer::questions::asked
    return [expr {$asked eq "ok" && [viewer::view lives] && [winfo exists .ask]}]
}

proc viewer::questions::centre_over {window} {
    update idletasks
    set x [expr {[winfo rootx .] + ([winfo width .] - [winfo reqwidth $window]) / 2}]
    set y [expr {[winfo rooty .] + ([winfo height .] - [winfo reqheight $window]) / 3}]
    wm geometry $window +[expr {max(0, $x)}]+[expr {max(0, $y)}]
}
