// placeholder: being written
