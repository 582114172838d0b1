# Prints what `akhostmgmt -list -short` prints for the server's reply; run it with -j.

"                                        " as $spaces
| "\nHost ID                                 Mapped Names",
  (.hosts[]
   | (.hostName // "") as $primary
   | [.hostMappings[] | .mappedHostName // ""] as $names
   | (.uuid // "") as $id
   | "\n" + $id + $spaces[($id | utf8bytelength):]
     + ([($names | select(index([$primary])) | $primary), ($names[] | select(. != $primary))]
        | join(", "))
     + "\n")
