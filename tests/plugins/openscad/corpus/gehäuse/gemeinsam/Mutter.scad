use <Schraube M3.scad>
module mutter() { cube([gewinde(), 4, 2]); }
