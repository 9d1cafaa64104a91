# Everything that can be done, in one list. actions.tcl says what a row means.
#
# Owns: nothing
# Offers: nothing
# Calls: actions, dialogs, display, documents, edits, help, panels, playback, tree, view, window

namespace eval viewer::commands {
    variable MENUS {file File view View display Display animate Animate select Select help Help}

    variable COMMANDS {
        file    command open         "Open..."                        Ctrl+O        {viewer::dialogs choose_model open}
        file    menu    recent       "Open recent"                    {}            {}
        file    command add          "Add..."                         Ctrl+Shift+O  {viewer::dialogs choose_model add}
        file    -       -            -                                -             -
        file    command reload       "Reload"                         F5            {viewer::documents reload}
        file    check   watch        "Reload when a file changes"     F6            setting
        file    command rename       "Rename model..."                F2            {viewer::dialogs ask_rename}
        file    -       -            -                                -             -
        file    command save_png     "Save picture as PNG..."         Ctrl+S        {viewer::dialogs choose_picture .png}
        file    command save_tga     "Save picture as TGA..."         Ctrl+Shift+S  {viewer::dialogs choose_picture .tga}
        file    -       -            -                                -             -
        file    command quit         "Quit"                           Ctrl+Q        {viewer::window quit}

        view    command north        "North"                          1             {viewer::view aim north}
        view    command south        "South"                          2             {viewer::view aim south}
        view    command east         "East"                           3             {viewer::view aim east}
        view    command west         "West"                           4             {viewer::view aim west}
        view    command down         "From above"                     5             {viewer::view aim down}
        view    command up           "From below"                     6             {viewer::view aim up}
        view    command home         "Start view"                     Home          {viewer::view start}
        view    command angles       "By angles..."                   A             {viewer::dialogs ask_angles}
        view    check   free         "Free rotation"                  V             setting
        view    -       -            -                                -             -
        view    command fit          "Fit"                            F             {viewer::view fit}
        view    command centre       "Centre"                         .             {viewer::view centre}
        view    command zoom_in      "Zoom in"                        +             {viewer::view zoom_by 0.8}
        view    command zoom_out     "Zoom out"                       -             {viewer::view zoom_by 1.25}
        view    -       -            -                                -             -
        view    radio   mode_turn    "Left button turns"              Ctrl+1        {mode turn}
        view    radio   mode_pan     "Left button shifts"             Ctrl+2        {mode pan}
        view    radio   mode_zoom    "Left button zooms"              Ctrl+3        {mode zoom}
        view    -       -            -                                -             -
        view    command size         "Fixed size..."                  {}            {viewer::dialogs ask_size}
        view    command background   "Background colour..."           {}            {viewer::dialogs choose_background}
        view    check   side         "Panels"                         F9            setting
        view    check   axes         "Axes and scale"                 F8            setting
        view    menu    scale        "Size of text"                   {}            {}

        display check   triangles    "Surfaces"                       S             flag
        display check   lines        "Lines"                          E             flag
        display check   curves       "Curved surfaces"                C             flag
        display check   points       "Points with numbers"            P             flag
        display check   normals      "Normals"                        N             flag
        display check   skeleton     "Skeleton"                       K             flag
        display -       -            -                                -             -
        display check   wireframe    "Wireframe"                      W             flag
        display check   quadlines    "Diagonals in wireframe"         Q             flag
        display check   backfaces    "Backs of single-sided layers"   B             flag
        display check   mirror       "Mirrored halves"                M             flag
        display -       -            -                                -             -
        display check   textures     "Textures"                       T             flag
        display check   transparency "Transparency"                   Y             flag
        display check   reflect      "Reflections"                    R             flag
        display check   gouraud      "Colours of points"              G             flag
        display check   lighting     "Light"                          L             flag
        display -       -            -                                -             -
        display check   pnfilter     "Every triangle curved"          U             flag
        display command smooth       "Draw textures in by half a texel" {}          {viewer::display draw_textures_in}
        display menu    lod          "Level of detail"                {}            {}
        display command lod_more     "Finer curves"                   \]            {viewer::display change_lod 1}
        display command lod_less     "Coarser curves"                 \[            {viewer::display change_lod -1}

        animate command animate      "Open scene list..."             Ctrl+Shift+A  {viewer::dialogs choose_scene_list}
        animate -       -            -                                -             -
        animate command play         "Play or pause"                  Space         {viewer::playback play_or_pause}
        animate command next         "Next step"                      Right         {viewer::playback step 1}
        animate command prev         "Previous step"                  Left          {viewer::playback step -1}
        animate command first        "To the start"                   Ctrl+Left     {viewer::playback to_start}
        animate -       -            -                                -             -
        animate menu    rate         "Steps per second"               {}            {}
        animate check   loop         "Loop"                           Ctrl+L        setting
        animate command range_in     "Play from here"                 I             {viewer::playback mark_range first}
        animate command range_out    "Play up to here"                O             {viewer::playback mark_range last}
        animate command range_all    "Play all"                       Shift+I       {viewer::playback clear_range}

        select  command all          "All"                            Ctrl+A        {viewer::tree select_all}
        select  command clear        "Clear"                          Escape        {viewer::tree select_none}
        select  -       -            -                                -             -
        select  command place        "Move, scale, turn..."           Ctrl+M        {viewer::panels show_place}
        select  command pancake      "Lay flat (pancake)"             {}            {viewer::edits pancake}
        select  command delete       "Delete"                         Delete        {viewer::edits delete_selected}

        help    command keys         "Keys"                           F1            {viewer::help show_keys}
        help    command about        "About"                          {}            {viewer::help show_about}
    }
    viewer::actions take $MENUS $COMMANDS
}
