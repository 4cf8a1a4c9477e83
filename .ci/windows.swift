// SPDX-License-Identifier: MIT
// Prints the numbers of the windows on the screen that belong to one of the named applications.
import CoreGraphics

let names = CommandLine.arguments.dropFirst()
let windows = CGWindowListCopyWindowInfo([.optionOnScreenOnly], kCGNullWindowID) as? [[String: Any]] ?? []
for window in windows {
    if let owner = window[kCGWindowOwnerName as String] as? String, names.contains(owner),
        let layer = window[kCGWindowLayer as String] as? Int, layer < 20,
        let number = window[kCGWindowNumber as String] as? Int
    {
        print(number)
    }
}
