use <../gemeinsam/Schraube M3.scad>
schraube();
translate([20, 0, 0]) import("../Teile/Platte #1.stl");
