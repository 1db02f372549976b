use <Mutter.scad>
module schraube() { cube([3, 3, 9]); translate([0, 0, 12]) mutter(); }
function gewinde() = 3;
