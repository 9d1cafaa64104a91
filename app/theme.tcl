# How everything looks: a dark neutral theme for the themed widgets and the few old ones (menus, canvas, text), and the
# size of the letters, which follows the screen or what the user chose.
#
# Owns: scale
# Offers: px, points, colour, scale, apply
# Calls: nothing

namespace eval viewer::theme {
    namespace export px points colour scale apply
    namespace ensemble create
    variable scale 1.0
    variable COLOUR
    array set COLOUR {
        window  #26292e   panel   #2c3036   field   #1d2024   line    #3b4048   hover #424852   button #373c45
        text    #d9dde3   dim     #949ca8   faint   #6b7380   accent  #4f8fd0   marked #33557a
        bad     #4a2b2d   bad_text #f0b4b0  note    #2d3a4a
    }
    variable TEXT_PIXELS 13     ;# height of letters at scale 1
}

proc viewer::theme::colour {name} {
    variable COLOUR
    return $COLOUR($name)
}

proc viewer::theme::scale {} {
    variable scale
    return $scale
}

# What fits the screen: the dots per inch that the system tells, and more where a very fine screen tells nothing of
# them.
proc viewer::theme::automatic_scale {} {
    set told [expr {[tk scaling] / (96.0 / 72.0)}]
    set height [winfo screenheight .]
    set fine [expr {$height >= 2000 ? 1.75 : ($height >= 1300 ? 1.25 : 1.0)}]
    return [expr {max(1.0, min(3.0, max($told < 1.15 ? 1.0 : $told, $fine)))}]
}

# So many pixels at scale 1.
proc viewer::theme::px {pixels} {
    variable scale
    return [expr {round($pixels * $scale)}]
}

# The other way round: sizes are kept so, to be right on another screen.
proc viewer::theme::points {pixels} {
    variable scale
    return [expr {round($pixels / $scale)}]
}

# Letters of that size (0: what suits the screen), and all that goes with them.
proc viewer::theme::apply {wanted} {
    variable scale
    variable TEXT_PIXELS
    set scale [expr {$wanted == 0 ? [automatic_scale] : $wanted}]
    foreach {font factor} {TkDefaultFont 1 TkTextFont 1 TkMenuFont 1 TkHeadingFont 1 TkCaptionFont 1.1
        TkFixedFont 1 TkTooltipFont 0.9 TkSmallCaptionFont 0.9} {
        font configure $font -size [expr {-round($TEXT_PIXELS * $factor * $scale)}] -weight normal
    }
    if {"ViewerBold" ni [font names]} { font create ViewerBold {*}[font actual TkDefaultFont] }
    font configure ViewerBold -size [expr {-round($TEXT_PIXELS * $scale)}] -weight bold
    if {"pelt" ni [ttk::style theme names]} { ttk::style theme create pelt -parent clam }
    ttk::style theme settings pelt viewer::theme::style_widgets
    ttk::style theme use pelt
    style_old_widgets
}

proc viewer::theme::style_widgets {} {
    variable COLOUR
    array set c [array get COLOUR]
    ttk::style configure . -background $c(window) -foreground $c(text) -font TkDefaultFont -bordercolor $c(line) \
        -lightcolor $c(panel) -darkcolor $c(panel) -troughcolor $c(field) -focuscolor $c(accent) \
        -selectbackground $c(marked) -selectforeground #ffffff -fieldbackground $c(field) -insertcolor $c(text) \
        -arrowcolor $c(dim) -arrowsize [px 12]
    ttk::style map . -foreground [list disabled $c(faint)] -background [list disabled $c(window)]
    ttk::style configure TButton -background $c(button) -bordercolor $c(line) -lightcolor $c(button) \
        -darkcolor $c(button) -padding [list [px 10] [px 4]] -width -6 -anchor center
    ttk::style map TButton -background [list pressed $c(field) active $c(hover)] \
        -bordercolor [list focus $c(accent)]
    ttk::style configure Toolbutton -background $c(window) -padding [list [px 9] [px 4]] -relief flat \
        -lightcolor $c(window) -darkcolor $c(window) -bordercolor $c(window)
    ttk::style map Toolbutton -background [list selected $c(marked) pressed $c(field) active $c(hover)] \
        -foreground [list selected #ffffff] -relief {} \
        -bordercolor [list selected $c(marked)] -lightcolor [list selected $c(marked)] \
        -darkcolor [list selected $c(marked)]
    foreach kind {TEntry TCombobox TSpinbox} {
        ttk::style configure $kind -padding [px 3] -foreground $c(text) -background $c(panel)
        ttk::style map $kind -fieldbackground [list readonly $c(field) disabled $c(window)] \
            -bordercolor [list focus $c(accent)] -lightcolor [list focus $c(accent)] \
            -foreground [list disabled $c(faint)] -background [list active $c(hover)] \
            -selectbackground [list !focus $c(field)] -selectforeground [list !focus $c(text)]
    }
    foreach kind {TCheckbutton TRadiobutton} {
        ttk::style configure $kind -indicatorbackground $c(field) -indicatorforeground #ffffff \
            -upperbordercolor $c(line) -lowerbordercolor $c(line) -indicatorsize [px 12] -padding [px 2] \
            -indicatormargin [list 0 0 [px 6] 0]
        ttk::style map $kind -background [list active $c(window)] -indicatorbackground [list selected $c(accent)]
    }
    ttk::style configure TNotebook -background $c(window) -bordercolor $c(line) -tabmargins {0 0 0 0}
    ttk::style configure TNotebook.Tab -background $c(window) -foreground $c(dim) -padding [list [px 10] [px 4]] \
        -bordercolor $c(line) -lightcolor $c(window)
    ttk::style map TNotebook.Tab -background [list selected $c(panel) active $c(hover)] \
        -foreground [list selected $c(text)] -lightcolor [list selected $c(panel)] -padding {}
    ttk::style configure Treeview -background $c(field) -fieldbackground $c(field) -foreground $c(text) \
        -rowheight [expr {[font metrics TkDefaultFont -linespace] + [px 6]}] -bordercolor $c(line) \
        -lightcolor $c(field) -indent [px 16]
    ttk::style map Treeview -background [list selected $c(marked)] -foreground [list selected #ffffff]
    ttk::style configure Heading -background $c(panel) -foreground $c(dim) -relief flat -padding [px 3]
    ttk::style map Heading -background [list active $c(hover)]
    ttk::style configure TScrollbar -background $c(line) -troughcolor $c(field) -bordercolor $c(field) \
        -lightcolor $c(line) -darkcolor $c(line) -gripcount 0 -arrowsize [px 11]
    ttk::style map TScrollbar -background [list disabled $c(field) active $c(faint)]
    ttk::style configure TScale -background $c(faint) -troughcolor $c(field) -bordercolor $c(line) \
        -lightcolor $c(faint) -darkcolor $c(faint) -gripcount 0 -sliderlength [px 18]
    ttk::style map TScale -background [list disabled $c(panel) active $c(accent)]
    ttk::style configure TPanedwindow -background $c(window)
    ttk::style configure Sash -sashthickness [px 6] -gripcount 0 -background $c(window) -lightcolor $c(window) \
        -bordercolor $c(window)
    ttk::style configure TMenubutton -background $c(window) -padding [list [px 9] [px 4]] -relief flat \
        -bordercolor $c(window) -lightcolor $c(window) -darkcolor $c(window)
    ttk::style map TMenubutton -background [list active $c(hover)]
    ttk::style configure Dim.TLabel -foreground $c(dim)
    ttk::style configure Bold.TLabel -font ViewerBold
    ttk::style configure Panel.TFrame -background $c(panel)
    foreach {name back fore} [list Bad $c(bad) $c(bad_text) Note $c(note) $c(text)] {
        ttk::style configure $name.TFrame -background $back
        ttk::style configure $name.TLabel -background $back -foreground $c(text)
        ttk::style configure Title$name.TLabel -background $back -foreground $fore -font ViewerBold
        ttk::style configure Code$name.TLabel -background $back -foreground $c(dim) -font TkFixedFont
        ttk::style configure $name.TButton -background $back -bordercolor $c(faint) -lightcolor $back -darkcolor $back
        ttk::style map $name.TButton -background [list active $c(hover)]
    }
}

proc viewer::theme::style_old_widgets {} {
    variable COLOUR
    array set c [array get COLOUR]
    . configure -background $c(window)
    foreach {pattern value} [list *tearOff 0 \
        *Menu.background $c(panel) *Menu.foreground $c(text) *Menu.activeBackground $c(marked) \
        *Menu.activeForeground #ffffff *Menu.selectColor $c(accent) *Menu.disabledForeground $c(faint) \
        *Menu.relief flat *Menu.borderWidth 1 *Menu.activeBorderWidth [px 3] *Menu.font TkMenuFont \
        *Toplevel.background $c(window) *Dialog.background $c(window) \
        *Text.background $c(field) *Text.foreground $c(text) *Text.insertBackground $c(text) \
        *Listbox.background $c(field) *Listbox.foreground $c(text) *Listbox.selectBackground $c(marked) \
        *Listbox.selectForeground #ffffff *Listbox.highlightThickness 0 *Listbox.borderWidth 1 \
        *TCombobox*Listbox.background $c(field) *TCombobox*Listbox.foreground $c(text) \
        *Canvas.background $c(field) *Canvas.highlightThickness 0 *Frame.background $c(window) \
        *Label.background $c(window) *Label.foreground $c(text) \
        *Button.background $c(panel) *Button.foreground $c(text) *Button.activeBackground $c(hover) \
        *Button.activeForeground $c(text) *Button.highlightThickness 0 \
        *Entry.background $c(field) *Entry.foreground $c(text) *Entry.insertBackground $c(text) \
        *Labelframe.background $c(window) *Labelframe.foreground $c(dim) \
        *Scale.background $c(window) *Scale.foreground $c(text) *Scale.troughColor $c(field)] {
        option add $pattern $value interactive
    }
}
