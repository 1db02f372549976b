dicke = 3;
// Found from the model that includes this file.
module logo() { import("Logo.stl"); }
