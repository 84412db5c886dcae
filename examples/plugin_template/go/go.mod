module my_plugin

go 1.19
